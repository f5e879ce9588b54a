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

std::filesystem::path make_directory(const std::filesystem::path& parent) {
  std::string name = std::filesystem::absolute(parent) / (std::string(name_begin) + "XXXXXX");
  if (::mkdtemp(name.data()) == nullptr) {
    throw system_failure("make a directory in", parent, errno);
  }
  return name;
}

/// Opens and locks the file that stands for the owner of a directory; nothing when it cannot be
/// opened, or another process has locked it.
file_descriptor lock_directory(const std::filesystem::path& directory, int flags) {
  file_descriptor file(::open((directory / "lock").c_str(), flags | O_RDWR | O_CLOEXEC, 0600));
  struct flock whole_file {};
  whole_file.l_type = F_WRLCK;
  const bool locked = file.get() >= 0 && ::fcntl(file.get(), F_SETLK, &whole_file) == 0;
  return locked ? std::move(file) : file_descriptor(-1);
}

}  // namespace

private_directory::private_directory(const std::filesystem::path& parent)
    : path_(make_directory(parent)), lock_(lock_directory(path_, O_CREAT)) {}

private_directory::~private_directory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void remove_abandoned_directories(const std::filesystem::path& parent) {
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(parent, ignored)) {
    if (!entry.path().filename().string().starts_with(name_begin)) continue;
    const file_descriptor lock = lock_directory(entry.path(), 0);
    if (lock.get() >= 0) std::filesystem::remove_all(entry.path(), ignored);
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
