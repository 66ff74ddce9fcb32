// Loaded before the program's own libraries (LD_PRELOAD): memory runs out at one allocation of the
// whole process, whichever library asks for it.
//
//   UTDATA_FAIL_ALLOCATION=7    the seventh allocation since main fails
//   UTDATA_FAIL_ALLOCATION=7+   that one and all after it
//   UTDATA_COUNT_ALLOCATIONS=F  writes how many there were into the file F when main returns
#include <dlfcn.h>

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

}  // extern "C"

namespace {

using Main = int (*)(int, char**, char**);
using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);

Main programMain = nullptr;
std::atomic<bool> isCounting{false};
std::atomic<long> asked{0};
long failing = 0;
bool failsForGood = false;

bool Fails() noexcept {
  if (!isCounting.load(std::memory_order_relaxed)) return false;
  const long number = ++asked;
  return number == failing || (failsForGood && number > failing);
}

int CountedMain(int count, char** arguments, char** environment) {
  if (const char* const place = std::getenv("UTDATA_FAIL_ALLOCATION")) {
    failing = std::atol(place);
    failsForGood = std::strchr(place, '+') != nullptr;
  }
  isCounting = failing > 0 || std::getenv("UTDATA_COUNT_ALLOCATIONS");
  const int status = programMain(count, arguments, environment);
  isCounting = false;
  if (const char* const path = std::getenv("UTDATA_COUNT_ALLOCATIONS"))
    if (std::FILE* const file = std::fopen(path, "w")) {
      std::fprintf(file, "%ld", asked.load());
      std::fclose(file);
    }
  return status;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) { return Fails() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
  return Fails() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  return Fails() ? nullptr : __libc_realloc(block, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
  return Fails() ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }

int __libc_start_main(Main main,
                      int count,
                      char** arguments,
                      void (*init)(),
                      void (*fini)(),
                      void (*loaderFini)(),
                      void* stackEnd) {
  programMain = main;
  const auto start = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"));
  return start(CountedMain, count, arguments, init, fini, loaderFini, stackEnd);
}

}  // extern "C"
