// The reader of one file: walks its top groups and gathers every known group.
#pragma once

#include <mutex>

#include "interfaces/framework.h"

struct fcontsec_typeFileDescriptor;

namespace utdata::container {
/// Lets SCFile::file_LastError say that a load ran out of memory.
void FailToLoad() noexcept;
}  // namespace utdata::container

/// One load at a time goes through a reader; readers do not exclude each other.
class CFContKVTiff : public CObject {
  DECLARE_DYNAMIC(CFContKVTiff)

 public:
  CFContKVTiff() = default;
  CFContKVTiff(const CFContKVTiff&) = delete;
  CFContKVTiff& operator=(const CFContKVTiff&) = delete;
  ~CFContKVTiff() override;

  /// Reads a file into an empty working record. Holds the reader's lock throughout; never throws.
  /// @return 0, or -1: the record is then empty and no file is left open
  [[nodiscard]] int FileLoad(const wchar_t* path, fcontsec_typeFileDescriptor* work);

 private:
  int fcontOpen(const wchar_t* path, fcontsec_typeFileDescriptor* work);
  void fcontFree(fcontsec_typeFileDescriptor* work) noexcept;

  std::mutex m_lock;  // held during one load; guards the record being filled, which is the caller's
};
