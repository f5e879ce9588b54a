#include "batch/private_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace trellion::batch {
namespace {

constexpr const char* lock_name = "lock";
constexpr const char* new_lock_name = "new-lock";
constexpr std::string_view varying = "XXXXXX";
// Far longer than from making a directory to locking it.
constexpr std::time_t time_to_lock = 3600;

bool is_safe(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.';
}

/// How the names of all private directories of this host begin.
std::string name_begin() {
  std::array<char, 65> host{};
  ::gethostname(host.data(), host.size() - 1);  // cut where it is longer
  std::string name = host.data();
  std::ranges::replace_if(
      name, [](char c) { return !is_safe(c); }, '_');
  return ".trellion-batch-" + name + '-';
}

/// The process that made a private directory of this host, by its name; nothing for other names.
std::optional<pid_t> owner_of(std::string_view name, std::string_view begin) {
  if (!name.starts_with(begin)) return std::nullopt;
  name.remove_prefix(begin.size());
  pid_t owner = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), owner);
  const auto left = static_cast<std::size_t>(name.data() + name.size() - end);
  const bool is_ours = error == std::errc() && owner > 0 && left == varying.size() + 1 &&
                       *end == '-' && name.find_last_of('-') == name.size() - left;
  return is_ours ? std::optional(owner) : std::nullopt;
}

std::filesystem::path make_directory(const std::filesystem::path& parent) {
  const std::string name = name_begin() + std::to_string(::getpid()) + '-' + std::string(varying);
  std::string path = std::filesystem::absolute(parent) / name;
  if (::mkdtemp(path.data()) == nullptr) {
    throw system_failure("make a directory in", parent, errno);
  }
  return path;
}

/// Whether nobody else has locked the file. The lock is held until it is closed.
bool lock(const file_descriptor& file) {
  struct flock whole_file {};
  whole_file.l_type = F_WRLCK;
  return ::fcntl(file.get(), F_OFD_SETLK, &whole_file) == 0;
}

/// Marks a directory as owned. The file has its name only when it is locked, so that nobody finds
/// it unlocked in between. Where there are no locks the name of the directory has to do.
file_descriptor lock_directory(const std::filesystem::path& directory) {
  const std::filesystem::path new_lock = directory / new_lock_name;
  file_descriptor file(::open(new_lock.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
  std::error_code ignored;
  if (file.get() >= 0 && lock(file)) {
    std::filesystem::rename(new_lock, directory / lock_name, ignored);
  }
  return file;
}

/// Whether it is a directory of our own in which a lock is free, or was never made though there
/// was time, and nobody is left to make it.
bool is_abandoned(const std::filesystem::path& path, pid_t owner) {
  const file_descriptor directory(
      ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (directory.get() < 0 || ::fstat(directory.get(), &status) != 0) return false;
  if (status.st_uid != ::geteuid()) return false;
  const file_descriptor file(
      ::openat(directory.get(), lock_name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (file.get() >= 0) return lock(file);
  return errno == ENOENT && ::kill(owner, 0) != 0 && errno == ESRCH &&
         status.st_mtime + time_to_lock < std::time(nullptr);
}

}  // namespace

private_directory::private_directory(const std::filesystem::path& parent)
    : path_(make_directory(parent)), lock_(lock_directory(path_)) {}

private_directory::~private_directory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void remove_abandoned_directories(const std::filesystem::path& parent) {
  const std::string begin = name_begin();
  std::error_code error;
  for (std::filesystem::directory_iterator at(parent, error), end; !error && at != end;
       at.increment(error)) {
    const std::optional<pid_t> owner = owner_of(at->path().filename().string(), begin);
    std::error_code ignored;
    if (owner && is_abandoned(at->path(), *owner)) std::filesystem::remove_all(at->path(), ignored);
  }
}

}  // namespace trellion::batch
