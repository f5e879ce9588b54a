#include "batch/placing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "files.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

constexpr mode_t permissions = 0777;

/// Some file systems have one mode for all files; that will do unless it permits more.
void set_permissions(const file_descriptor& opened, mode_t wanted, const fs::path& file) {
  if (::fchmod(opened.get(), wanted) == 0) return;
  const int error = errno;
  struct stat status {};
  if (::fstat(opened.get(), &status) != 0 || (status.st_mode & permissions & ~wanted) != 0) {
    throw system_failure("set the permissions of", file, error);
  }
}

/// Has the system write what it holds back of a file.
void complete(const fs::path& file, mode_t wanted) {
  const file_descriptor opened(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (opened.get() < 0) throw system_failure("open", file, errno);
  set_permissions(opened, wanted, file);
  if (::fsync(opened.get()) != 0) throw system_failure("write", file, errno);
}

/// Has the system write the name of a file, too. Not every directory may be read, and not every
/// file system writes through.
void write_name_through(const fs::path& file) {
  const fs::path parent = file.has_parent_path() ? file.parent_path() : fs::path(".");
  const file_descriptor opened(::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.get() < 0 || ::fsync(opened.get()) == 0) return;
  if (errno == EIO || errno == ENOSPC || errno == EDQUOT) {
    throw system_failure("write", parent, errno);
  }
}

/// Gives a file a name that is free; false when it is taken.
bool take_free_name(const fs::path& file, const fs::path& name) {
  // Unlike a rename, a link never replaces what is there.
  if (::link(file.c_str(), name.c_str()) == 0) return true;
  if (errno == EEXIST) return false;
  // Some file systems know no links, but such a rename; the others neither.
  if (::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, name.c_str(), RENAME_NOREPLACE) == 0) {
    return true;
  }
  if (errno == EEXIST || fs::exists(fs::symlink_status(name))) return false;
  if (std::rename(file.c_str(), name.c_str()) != 0) throw system_failure("create", name, errno);
  return true;
}

/// A result takes the place of an earlier one, never that of a device or a folder.
bool is_something_else(const fs::path& destination) {
  std::error_code ignored;
  const fs::file_status status = fs::symlink_status(destination, ignored);
  return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_symlink(status);
}

}  // namespace

bool place(const fs::path& file, const fs::path& destination, mode_t input_mode,
           existing_file treatment) {
  complete(file, input_mode & permissions);
  if (treatment == existing_file::keep) {
    if (!take_free_name(file, destination)) return false;
  } else if (is_something_else(destination)) {
    throw run_error("'" + destination.string() + "' is no regular file, and stays");
  } else if (std::rename(file.c_str(), destination.c_str()) != 0) {
    throw system_failure("create", destination, errno);
  }
  write_name_through(destination);
  return true;
}

}  // namespace trellion::batch
