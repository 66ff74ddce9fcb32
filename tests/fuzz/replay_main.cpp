// Runs a fuzz target over stored inputs, for builds without a fuzzing engine:
//   open_fuzz FILE-OR-FOLDER...
// Each file below the folders is one input. Ends with status 1 when an argument holds no input, so
// that a lost corpus is noticed.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

// The name is the fuzzing engine's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> InputsOf(const fs::path& argument) {
  if (fs::is_regular_file(argument)) return {argument};
  std::vector<fs::path> inputs;
  for (const auto& entry : fs::recursive_directory_iterator(argument)) {
    if (entry.is_regular_file()) inputs.push_back(entry.path());
  }
  std::sort(inputs.begin(), inputs.end());
  return inputs;
}

void Replay(const fs::path& input) {
  std::ifstream stream(input, std::ios::binary);
  if (!stream)
    throw fs::filesystem_error("cannot read", input, std::make_error_code(std::errc::io_error));
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  // An exact copy on the heap, so that a read past the end is seen by the address sanitizer.
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) try {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    const auto inputs = InputsOf(argv[i]);
    if (inputs.empty()) {
      std::fprintf(stderr, "%s: no input\n", argv[i]);
      return 1;
    }
    for (const auto& input : inputs) {
      std::fprintf(stderr, "%s\n", input.c_str());
      Replay(input);
    }
    count += inputs.size();
  }
  std::printf("replayed %zu inputs\n", count);
  return count == 0 ? 1 : 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "%s\n", failure.what());
  return 1;
}
