#include "private_directory.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>

namespace trellion::batch {
namespace {

/// Has the system write what it holds back, so that not even a power failure leaves half a file.
void write_through(const std::filesystem::path& file) {
  const file_descriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (opened.get() < 0 || ::fsync(opened.get()) != 0) throw system_failure("write", file, errno);
}

constexpr std::string_view name_begin = ".trellion-batch-";
constexpr const char* lock_name = "lock";

std::filesystem::path make_directory(const std::filesystem::path& parent) {
  std::string name = std::filesystem::absolute(parent) / (std::string(name_begin) + "XXXXXX");
  if (::mkdtemp(name.data()) == nullptr) {
    throw system_failure("make a directory in", parent, errno);
  }
  return name;
}

/// Opens a file and locks it; nothing when it cannot be opened, or another process has locked it.
file_descriptor lock(const std::filesystem::path& file, int flags) {
  file_descriptor opened(::open(file.c_str(), flags | O_RDWR | O_CLOEXEC, 0600));
  struct flock whole_file {};
  whole_file.l_type = F_WRLCK;
  const bool locked = opened.get() >= 0 && ::fcntl(opened.get(), F_SETLK, &whole_file) == 0;
  return locked ? std::move(opened) : file_descriptor(-1);
}

/// Marks a directory as owned. The file has its name only when it is locked, so that nobody finds
/// it unlocked in between.
file_descriptor lock_directory(const std::filesystem::path& directory) {
  file_descriptor locked = lock(directory / "new-lock", O_CREAT);
  std::error_code ignored;
  std::filesystem::rename(directory / "new-lock", directory / lock_name, ignored);
  return locked;
}

}  // namespace

private_directory::private_directory(const std::filesystem::path& parent)
    : path_(make_directory(parent)), lock_(lock_directory(path_)) {}

private_directory::~private_directory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void remove_abandoned_directories(const std::filesystem::path& parent) {
  std::error_code error;
  for (std::filesystem::directory_iterator at(parent, error), end; !error && at != end;
       at.increment(error)) {
    if (!at->path().filename().string().starts_with(name_begin)) continue;
    std::error_code ignored;
    const file_descriptor locked = lock(at->path() / lock_name, 0);
    if (locked.get() >= 0) std::filesystem::remove_all(at->path(), ignored);
  }
}

bool move_into_place(const std::filesystem::path& file, const std::filesystem::path& place,
                     existing_file treatment) {
  write_through(file);
  if (treatment == existing_file::keep) {
    // Unlike a rename, a link never replaces what is there.
    if (::link(file.c_str(), place.c_str()) == 0) return true;
    if (errno == EEXIST || std::filesystem::exists(std::filesystem::symlink_status(place))) {
      return false;
    }
    // Here the file system knows no links.
  }
  if (std::rename(file.c_str(), place.c_str()) != 0) throw system_failure("create", place, errno);
  return true;
}

}  // namespace trellion::batch
