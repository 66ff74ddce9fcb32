#include "platform/os/posix_error.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace utdata::os {
namespace {

/// The first number of an error stands for it when nobody knows a closer one.
constexpr std::pair<int, Error> table[] = {
    {ENOENT, Error::NotFound},
    {ENOTDIR, Error::NotFound},
    {EEXIST, Error::Exists},
    {ENOTEMPTY, Error::Exists},
    {EACCES, Error::AccessDenied},
    {EPERM, Error::AccessDenied},
    {EROFS, Error::AccessDenied},
    {EISDIR, Error::NotAFile},
    {ENXIO, Error::NotAFile},
    {ENODEV, Error::NotAFile},
    {ENOSPC, Error::DiskFull},
    {EDQUOT, Error::DiskFull},
    {EFBIG, Error::DiskFull},
    {EWOULDBLOCK, Error::Busy},
    {ENAMETOOLONG, Error::PathTooLong},
    {EINVAL, Error::BadArgument},
    {ENOMEM, Error::NoMemory},
    {EOPNOTSUPP, Error::NotSupported},
    {ENOSYS, Error::NotSupported},
    {EIO, Error::Other},
};

thread_local int lastNumber = 0;

}  // namespace

Error LastError() noexcept {
  lastNumber = errno;
  const auto* found = std::find_if(
      std::begin(table), std::end(table), [](const auto& row) { return row.first == lastNumber; });
  return found == std::end(table) ? Error::Other : found->second;
}

int LastErrorNumber() noexcept { return lastNumber; }

Error Fail(Error error) noexcept {
  const auto* found = std::find_if(
      std::begin(table), std::end(table), [&](const auto& row) { return row.second == error; });
  if (found != std::end(table)) lastNumber = found->first;
  return error;
}

std::string_view ErrorText(Error error) noexcept {
  static constexpr std::string_view texts[] = {"no error",
                                               "no such file",
                                               "the name is taken",
                                               "permission denied",
                                               "not a file",
                                               "the disk is full",
                                               "in use by another",
                                               "path too long",
                                               "bad argument",
                                               "out of memory",
                                               "not supported by the file system",
                                               "input/output error"};
  return texts[static_cast<std::size_t>(error)];
}

}  // namespace utdata::os
