#include "tests/support/small_disk.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace utdata::test {
namespace {

/// Once per process: from then on the calling thread, and the processes it starts, see mounts that
/// nobody else sees.
bool HasMountsOfItsOwn() {
  static const bool has = ::unshare(CLONE_NEWNS) == 0 &&
                          ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  return has;
}

/// Makes the file system in a file and mounts it. All of its blocks are for everyone.
bool MountFile(const std::string& kind,
               std::uint64_t bytes,
               const std::string& medium,
               const std::string& folder) {
  const std::string make =
      kind == "xfs" ? "mkfs.xfs -q -f '" : "mkfs." + kind + " -q -F -b 4096 -m 0 '";
  const std::string command = "PATH=$PATH:/usr/sbin:/sbin; exec >/dev/null 2>&1; truncate -s " +
                              std::to_string(bytes) + " '" + medium + "' && " + make + medium +
                              "' && mount -o loop '" + medium + "' '" + folder + "'";
  return std::system(command.c_str()) == 0;
}

}  // namespace

SmallDisk::SmallDisk(std::uint64_t bytes, const std::string& kind) {
  if (!HasMountsOfItsOwn()) return;
  if (kind != "tmpfs") {
    m_isMounted =
        MountFile(kind, bytes, (m_medium.Path() / "medium").string(), m_folder.Path().string());
    return;
  }
  const std::string options = "size=" + std::to_string(bytes);
  m_isMounted = ::mount("none", m_folder.Path().c_str(), "tmpfs", 0, options.c_str()) == 0;
}

SmallDisk::~SmallDisk() {
  if (m_isMounted) ::umount2(m_folder.Path().c_str(), MNT_DETACH);
}

void SmallDisk::FillUpTo(std::uint64_t bytes) const {
  std::error_code ignored;
  const std::string path = (m_folder.Path() / "filler").string();
  std::filesystem::remove(path, ignored);
  const int filler = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  // What a file takes beside its bytes is known to the file system alone.
  std::uint64_t size = 0;
  for (std::uint64_t step = std::uint64_t{1} << 40; step >= 4096;) {
    const std::uint64_t free = std::filesystem::space(m_folder.Path(), ignored).available;
    if (free <= bytes) break;
    step = std::min(step, (free - bytes) / 4096 * 4096);
    if (step == 0) break;
    if (::posix_fallocate(filler, static_cast<off_t>(size), static_cast<off_t>(step)) == 0)
      size += step;
    else
      step /= 2;
  }
  ::close(filler);
}

}  // namespace utdata::test
