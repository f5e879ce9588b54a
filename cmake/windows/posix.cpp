#include "posix.h"

#include <windows.h>

#include <algorithm>
#include <cerrno>

namespace {

constexpr std::size_t most_at_once = std::size_t{1} << 30;

unsigned int taken_at_once(std::size_t count) {
  return static_cast<unsigned int>(std::min(count, most_at_once));
}

std::uint64_t joined(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

/// The console's bytes are the same everywhere, and no line of it gets an end of two. Answers are
/// read as lines, as they are typed.
[[maybe_unused]] const bool streams_take_bytes = [] {
  return ::_setmode(STDOUT_FILENO, _O_BINARY) != -1 && ::_setmode(STDERR_FILENO, _O_BINARY) != -1;
}();

}  // namespace

int fstat(int descriptor, struct posix_stat* status) {
  struct _stat64 found {};
  if (::_fstat64(descriptor, &found) != 0) return -1;
  *status = {0, 0, found.st_mode, found.st_size};
  const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
  BY_HANDLE_FILE_INFORMATION file{};
  if (::GetFileInformationByHandle(handle, &file) != 0) {
    status->st_dev = file.dwVolumeSerialNumber;
    status->st_ino = joined(file.nFileIndexHigh, file.nFileIndexLow);
  } else if (::GetFileType(handle) == FILE_TYPE_DISK) {
    errno = EIO;
    return -1;
  }
  return 0;
}

int posix_stat_of(const char* name, struct posix_stat* status) {
  struct _stat64 found {};
  if (::_stat64(name, &found) != 0) return -1;
  *status = {0, 0, found.st_mode, found.st_size};
  return 0;
}

ssize_t read(int descriptor, void* buffer, std::size_t capacity) {
  return ::_read(descriptor, buffer, taken_at_once(capacity));
}

ssize_t write(int descriptor, const void* bytes, std::size_t count) {
  return ::_write(descriptor, bytes, taken_at_once(count));
}

int fchmod(int /*descriptor*/, mode_t /*mode*/) {
  errno = EPERM;
  return -1;
}
