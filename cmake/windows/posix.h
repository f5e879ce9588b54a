#pragma once

// What the programs need of POSIX and Windows lacks, or has in another way. Included before
// everything else in every source file, so that the sources know one kind of system only. A header
// of the system: it calls a type and a function by one name, as those do.
#pragma GCC system_header

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>
#include <wchar.h>  // has a `stat` of its own, too

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>

// Files hold bytes here, not lines; and are not handed to other programs.
inline constexpr int O_CLOEXEC = _O_NOINHERIT | _O_BINARY;
inline constexpr int O_NOCTTY = 0;

// The system raises neither; nor does it ever raise the one that stands for them here.
inline constexpr int SIGPIPE = SIGTERM;
inline constexpr int SIGXFSZ = SIGTERM;

#ifndef S_IRWXG
inline constexpr mode_t S_IRWXG = S_IRWXU >> 3;
inline constexpr mode_t S_IRWXO = S_IRWXU >> 6;
#endif

#undef stat
#undef fstat

/// The system's own has numbers of files that are 0 for all, and sizes of 32 bits.
struct posix_stat {
  std::uint64_t st_dev;
  std::uint64_t st_ino;
  mode_t st_mode;
  std::int64_t st_size;
};

/// Whatever cannot be told apart from each other (two consoles, say) has one number: what must not
/// be written over is safe. Sets errno.
int fstat(int descriptor, posix_stat* status);
/// Leaves out which file it is. Sets errno.
int posix_stat_of(const char* name, posix_stat* status);
inline int posix_stat(const char* name, struct posix_stat* status) {
  return posix_stat_of(name, status);
}
#define stat posix_stat

/// The system takes counts of 32 bits: less than was asked for may be read or written.
ssize_t read(int descriptor, void* buffer, std::size_t capacity);
ssize_t write(int descriptor, const void* bytes, std::size_t count);

/// Always fails, and nothing is lost by it: who may read a file is a matter of its directory.
int fchmod(int descriptor, mode_t mode);

/// Windows has one answer for each thread, so that this is safe, too.
inline std::tm* localtime_r(const std::time_t* time, std::tm* result) {
  return localtime_s(result, time) == 0 ? result : nullptr;
}
