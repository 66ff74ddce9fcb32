// Arrays in every order of axes become A-scans.
#include "utdata/arrays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace utdata {
namespace {

template <class Element>
class ArrayInMemory final : public ArraySource {
 public:
  explicit ArrayInMemory(std::size_t quantity) : elements(quantity) {}
  void Read(std::uint64_t firstElement, std::span<std::byte> bytes) override {
    std::memcpy(bytes.data(), elements.data() + firstElement, bytes.size());
  }
  std::vector<Element> elements;
};

/// Every element of the array is its number in natural order, as far as it holds that.
template <class Element>
void ExpectGathered(ArrayLayout layout) {
  layout.sampleSize = sizeof(Element);
  std::uint64_t size = 0;
  ASSERT_TRUE(layout.Size(size));
  ArrayInMemory<Element> array(size / sizeof(Element));
  std::vector<Element> natural(array.elements.size());
  // From one beam, row, column and sample to the next.
  std::array<std::uint64_t, arrayAxisQuantity> steps{};
  for (std::size_t axis = arrayAxisQuantity, step = 1; axis-- > 0; step *= layout.shape[axis])
    steps[static_cast<std::size_t>(layout.axes[axis])] = step;
  for (std::size_t number = 0; number < natural.size(); ++number) {
    std::uint64_t rest = number, place = 0;
    for (const ArrayAxis axis :
         {ArrayAxis::Sample, ArrayAxis::Column, ArrayAxis::Row, ArrayAxis::Beam}) {
      place += rest % layout.Quantity(axis) * steps[static_cast<std::size_t>(axis)];
      rest /= layout.Quantity(axis);
    }
    const auto value = static_cast<Element>(number + 30000);
    natural[number] = value;
    array.elements[place] =
        layout.bigEndian ? static_cast<Element>(value << 8U | value >> 8U) : value;
  }
  std::vector<Element> gathered(natural.size());
  std::uint64_t done = 0;
  GatherAScans(array,
               layout,
               std::as_writable_bytes(std::span(gathered)),
               [&](std::uint64_t now, std::uint64_t total) {
                 EXPECT_GT(now, done);
                 EXPECT_EQ(total, size);
                 done = now;
               });
  EXPECT_EQ(done, size);
  EXPECT_TRUE(gathered == natural);
}

TEST(GatheredArrays, HoldTheElementsOfEveryOrderOfAxes) {
  std::array axes = {ArrayAxis::Beam, ArrayAxis::Row, ArrayAxis::Column, ArrayAxis::Sample};
  do {
    SCOPED_TRACE(testing::Message() << static_cast<int>(axes[0]) << static_cast<int>(axes[1])
                                    << static_cast<int>(axes[2]));
    ArrayLayout layout{.shape = {3, 5, 37, 40}, .axes = axes};
    ExpectGathered<std::uint8_t>(layout);
    ExpectGathered<std::uint16_t>(layout);
    layout.bigEndian = true;
    ExpectGathered<std::uint16_t>(layout);
  } while (std::next_permutation(axes.begin(), axes.end()));
}

// What does not fit the buffer is read a part of the columns at a time, or some rows.
TEST(GatheredArrays, MayBeLargerThanWhatIsReadAtOnce) {
  ExpectGathered<std::uint16_t>(
      {.shape = {1, 2, 3000, 5600},
       .axes = {ArrayAxis::Beam, ArrayAxis::Row, ArrayAxis::Sample, ArrayAxis::Column}});
  ExpectGathered<std::uint16_t>(
      {.shape = {90, 1000, 1, 200},
       .axes = {ArrayAxis::Column, ArrayAxis::Row, ArrayAxis::Beam, ArrayAxis::Sample}});
}

TEST(ArrayUnits, AreFoundByNameAndByBase) {
  EXPECT_EQ(FindArrayUnit("mm")->base, kvt_UnitMetre);
  EXPECT_EQ(FindArrayUnit("cubit"), nullptr);
  EXPECT_EQ(ArrayUnitOf(kvt_UnitMetre).name, "m");
  EXPECT_EQ(ArrayUnitOf(static_cast<kvt_enumUnits>(99)).name, "");
}

}  // namespace
}  // namespace utdata
