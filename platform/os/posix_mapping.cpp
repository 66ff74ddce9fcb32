#include "platform/os/posix_mapping.h"

#include <sys/mman.h>
#include <unistd.h>

#include <limits>
#include <new>

#include "platform/os/posix_error.h"

namespace utdata::os {
namespace {

class PosixMapping final : public Mapping {
 public:
  /// `base` and `length` are what was mapped; the view starts `skip` bytes into it.
  PosixMapping(void* base, std::size_t length, std::size_t skip)
      : m_base(base), m_length(length), m_skip(skip) {}
  PosixMapping(const PosixMapping&) = delete;
  PosixMapping& operator=(const PosixMapping&) = delete;
  ~PosixMapping() override { ::munmap(m_base, m_length); }
  std::byte* Data() const noexcept override { return static_cast<std::byte*>(m_base) + m_skip; }
  std::size_t Size() const noexcept override { return m_length - m_skip; }

 private:
  void* m_base;
  std::size_t m_length;
  std::size_t m_skip;
};

/// Addresses without memory; MAP_FIXED replaces what is mapped there in one step.
void* MapNothing(void* place, std::size_t size, int fixed) {
  return ::mmap(place, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | fixed, -1, 0);
}

class PosixAddressRange final : public AddressRange {
 public:
  PosixAddressRange(void* base, std::size_t size)
      : m_base(static_cast<std::byte*>(base)), m_size(size) {}
  PosixAddressRange(const PosixAddressRange&) = delete;
  PosixAddressRange& operator=(const PosixAddressRange&) = delete;
  ~PosixAddressRange() override { ::munmap(m_base, m_size); }
  std::byte* Data() const noexcept override { return m_base; }
  std::size_t Size() const noexcept override { return m_size; }
  Error Clear(std::size_t offset, std::size_t size) override {
    return MapNothing(m_base + offset, size, MAP_FIXED) == MAP_FAILED ? LastError() : Error::None;
  }

 private:
  std::byte* m_base;
  std::size_t m_size;
};

class PosixFileMapping final : public FileMapping {
 public:
  PosixFileMapping(int descriptor, std::uint64_t size) : m_descriptor(descriptor), m_size(size) {}
  std::uint64_t Size() const noexcept override { return m_size; }
  Error MapAt(AddressRange& range, std::size_t offset, std::size_t size) override {
    void* place = range.Data() + offset;
    if (::mmap(place, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, m_descriptor, 0) !=
        MAP_FAILED)
      return Error::None;
    const Error error = LastError();
    // The failed call may have unmapped the place, which must stay reserved.
    MapNothing(place, size, MAP_FIXED);
    return error;
  }

 private:
  int m_descriptor;
  std::uint64_t m_size;
};

}  // namespace

Error MapPrivately(int descriptor,
                   std::uint64_t offset,
                   std::size_t size,
                   std::unique_ptr<Mapping>& mapping) {
  // Pages of the machine may be larger than those of a file.
  const auto page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  const auto skip = static_cast<std::size_t>(offset % page);
  if (!FitsOffset(offset) || size > std::numeric_limits<std::size_t>::max() - skip)
    return Fail(Error::Other);
  void* base = ::mmap(nullptr,
                      size + skip,
                      PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_NORESERVE,
                      descriptor,
                      static_cast<off_t>(offset - skip));
  if (base == MAP_FAILED) return LastError();
  mapping.reset(new (std::nothrow) PosixMapping(base, size + skip, skip));
  if (mapping) return Error::None;
  ::munmap(base, size + skip);
  return Fail(Error::NoMemory);
}

Error NewFileMapping(int descriptor, std::uint64_t size, std::unique_ptr<FileMapping>& mapping) {
  mapping.reset(new (std::nothrow) PosixFileMapping(descriptor, size));
  return mapping ? Error::None : Fail(Error::NoMemory);
}

Error ReserveRange(std::size_t size, std::unique_ptr<AddressRange>& range) {
  void* base = MapNothing(nullptr, size, 0);
  if (base == MAP_FAILED) return LastError();
  range.reset(new (std::nothrow) PosixAddressRange(base, size));
  if (range) return Error::None;
  ::munmap(base, size);
  return Fail(Error::NoMemory);
}

}  // namespace utdata::os
