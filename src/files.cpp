#include "files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace trellion {
namespace {

/// Writes everything; returns the error number of a failure, 0 when all is written.
int write_all(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

constexpr mode_t permissions = S_IRWXU | S_IRWXG | S_IRWXO;

int open_file(const std::string& name, int flags, std::string_view what, mode_t mode = 0666) {
  const int descriptor = ::open(name.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
  if (descriptor < 0) throw system_failure(what, name, errno);
  return descriptor;
}

struct stat status_of(const file_descriptor& file, const std::string& name) {
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) throw system_failure("examine", name, errno);
  return status;
}

}  // namespace

file_descriptor::file_descriptor(file_descriptor&& other) noexcept : descriptor_(other.release()) {}

file_descriptor::~file_descriptor() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

int file_descriptor::release() { return std::exchange(descriptor_, -1); }

input_file::input_file(const std::string& name)
    : name_(name), file_(open_file(name, O_RDONLY, "open")), status_(status_of(file_, name)) {
  if (S_ISDIR(status_.st_mode)) throw system_failure("read", name, EISDIR);
}

std::size_t input_file::read(char* buffer, std::size_t capacity) {
  while (true) {
    const ssize_t count = ::read(file_.get(), buffer, capacity);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) throw read_failure(name_, errno);
  }
}

std::size_t input_file::expected_size() const { return static_cast<std::size_t>(status_.st_size); }

output_file::output_file(const std::string& name, mode how)
    : name_(name),
      file_(open_file(name, O_WRONLY | O_CREAT | (how == mode::append ? O_APPEND : O_TRUNC),
                      "create")) {}

output_file::output_file(const std::string& name, const input_file& input)
    : name_(name),
      file_(open_file(name, O_WRONLY | O_CREAT, "create", input.status_.st_mode & permissions)) {
  // Opened without O_TRUNC: only a file that is known not to be the input may be emptied.
  const struct stat mine = status_of(file_, name_);
  const struct stat& source = input.status_;
  if (mine.st_dev == source.st_dev && mine.st_ino == source.st_ino) {
    throw run_error("cannot create '" + name_ + "': it is the input file itself");
  }
  if (!S_ISREG(mine.st_mode)) return;
  const mode_t permitted = mine.st_mode & permissions;
  const mode_t narrowed = permitted & source.st_mode;
  // It fails for the file of another owner, who knows who may read it, and where a file system has
  // no permissions of its own.
  if (narrowed != permitted) static_cast<void>(::fchmod(file_.get(), narrowed));
  if (::ftruncate(file_.get(), 0) != 0) throw system_failure("empty", name_, errno);
}

void output_file::write(std::string_view bytes) {
  const int error_number = write_all(file_.get(), bytes);
  if (error_number != 0) throw system_failure("write", name_, error_number);
}

void output_file::close() {
  if (::close(file_.release()) != 0) throw system_failure("write", name_, errno);
}

void console_output::write(std::string_view bytes) {
  if (failure_ != 0) return;
  failure_ = write_all(STDOUT_FILENO, bytes);
  if (failure_ != 0 && !keeps_going_) throw system_failure("write", "standard output", failure_);
}

bool file_exists(const std::string& name) {
  struct stat status {};
  return ::stat(name.c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

std::uint64_t file_size(const std::string& name) {
  struct stat status {};
  return ::stat(name.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace trellion
