#include "arrays/sample_type.h"

#include <algorithm>
#include <iterator>

namespace utdata::program {
namespace {

constexpr SampleType sampleTypes[] = {{"u8", kvt_UInt8, 1, false, 0, 255},
                                      {"i8", kvt_Int8, 1, true, -128, 127},
                                      {"u16", kvt_UInt16, 2, false, 0, 65535},
                                      {"i16", kvt_Int16, 2, true, -32768, 32767}};

template <class Test>
const SampleType* Find(Test test) {
  const auto* found = std::find_if(std::begin(sampleTypes), std::end(sampleTypes), test);
  return found == std::end(sampleTypes) ? nullptr : found;
}

}  // namespace

const SampleType* FindSampleType(std::string_view name) {
  return Find([=](const SampleType& type) { return name == type.name; });
}

const SampleType* FindSampleType(kvt_enumDataType wanted) {
  return Find([=](const SampleType& type) { return wanted == type.type; });
}

const SampleType* FindSampleType(std::uint64_t size, bool isSigned) {
  return Find(
      [=](const SampleType& type) { return size == type.size && isSigned == type.isSigned; });
}

}  // namespace utdata::program
