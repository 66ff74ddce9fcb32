#include "tests/support/small_disk.h"

#include <sched.h>
#include <sys/mount.h>

namespace utdata::test {
namespace {

/// Once per process: from then on the calling thread, and the processes it starts, see mounts that
/// nobody else sees.
bool HasMountsOfItsOwn() {
  static const bool has = ::unshare(CLONE_NEWNS) == 0 &&
                          ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  return has;
}

}  // namespace

SmallDisk::SmallDisk(std::uint64_t bytes) {
  if (!HasMountsOfItsOwn()) return;
  const std::string options = "size=" + std::to_string(bytes);
  m_isMounted = ::mount("none", m_folder.Path().c_str(), "tmpfs", 0, options.c_str()) == 0;
}

SmallDisk::~SmallDisk() {
  if (m_isMounted) ::umount2(m_folder.Path().c_str(), MNT_DETACH);
}

}  // namespace utdata::test
