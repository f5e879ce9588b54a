#include "process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

extern char** environ;

namespace trellion::batch {
namespace {

constexpr std::array watched_signals = {SIGINT, SIGTERM, SIGHUP};
constexpr std::size_t max_messages = 4096;
// Sent to the watcher by ourselves, to end it.
constexpr int farewell = SIGUSR1;

bool is_ignored(int signal_number) {
  struct sigaction action {};
  ::sigaction(signal_number, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

bool is_executable(const std::filesystem::path& path) {
  return std::filesystem::is_regular_file(path) && ::access(path.c_str(), X_OK) == 0;
}

std::vector<char*> pointers_to(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

/// Our environment, with the directory for temporary files replaced.
std::vector<std::string> environment_with(const std::filesystem::path& temporary) {
  std::vector<std::string> result = {"TMPDIR=" + temporary.string()};
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (std::strncmp(*entry, "TMPDIR=", 7) != 0) result.emplace_back(*entry);
  }
  return result;
}

struct child_process {
  pid_t pid;
  file_descriptor output;
  file_descriptor messages;
};

child_process start(const std::vector<std::string>& command, const std::filesystem::path& directory,
                    const sigset_t& signal_mask) {
  pipe_ends output = make_pipe();
  pipe_ends messages = make_pipe();
  const file_descriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  // Everything is made ready here: between fork and exec the child of a process with threads may
  // not allocate.
  const std::vector<std::string> environment = environment_with(directory);
  const std::vector<char*> arguments = pointers_to(command);
  const std::vector<char*> variables = pointers_to(environment);

  const pid_t pid = ::fork();
  if (pid < 0) throw system_failure("run", command.front(), errno);
  if (pid == 0) {
    ::pthread_sigmask(SIG_SETMASK, &signal_mask, nullptr);
    std::signal(SIGPIPE, SIG_DFL);
    const bool ready = ::dup2(nothing.get(), STDIN_FILENO) >= 0 &&
                       ::dup2(output.write.get(), STDOUT_FILENO) >= 0 &&
                       ::dup2(messages.write.get(), STDERR_FILENO) >= 0 &&
                       ::chdir(directory.c_str()) == 0;
    if (ready) ::execve(arguments[0], arguments.data(), variables.data());
    ::_exit(127);
  }
  return {pid, std::move(output.read), std::move(messages.read)};
}

/// Cuts a stream of bytes into lines.
class line_cutter {
 public:
  explicit line_cutter(const line_handler& handle_line) : handle_line_(handle_line) {}

  void add(std::string_view bytes) {
    for (std::size_t end; (end = bytes.find('\n')) != std::string_view::npos;) {
      line_ += bytes.substr(0, end);
      handle_line_(line_);
      line_.clear();
      bytes.remove_prefix(end + 1);
    }
    line_ += bytes;
  }

 private:
  const line_handler& handle_line_;
  std::string line_;
};

/// Reads once; false at the end.
template <class Take>
bool read_some(const file_descriptor& from, Take take) {
  std::array<char, 4096> buffer;
  const ssize_t count = ::read(from.get(), buffer.data(), buffer.size());
  if (count > 0) take(std::string_view(buffer.data(), static_cast<std::size_t>(count)));
  return count > 0 || (count < 0 && errno == EINTR);
}

int wait_for(pid_t pid) {
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

pipe_ends make_pipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw run_error("cannot make a pipe: " + std::generic_category().message(errno));
  }
  return {file_descriptor(ends[0]), file_descriptor(ends[1])};
}

interruption::interruption() : wake_(make_pipe()) {
  ::sigemptyset(&watched_);
  ::sigaddset(&watched_, farewell);
  for (const int number : watched_signals) {
    if (!is_ignored(number)) ::sigaddset(&watched_, number);
  }
  ::pthread_sigmask(SIG_BLOCK, &watched_, &former_mask_);
  watcher_ = std::thread([this] {
    int number = 0;
    ::sigwait(&watched_, &number);
    if (number == farewell) return;
    signal_number_ = number;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(wake_.write.get(), &byte, 1);
  });
}

interruption::~interruption() {
  if (!requested()) ::pthread_kill(watcher_.native_handle(), farewell);
  watcher_.join();
}

bool interruption::requested() const { return signal_number_ != 0; }

void interruption::end_by_signal() const {
  if (!requested()) return;
  std::signal(signal_number_, SIG_DFL);
  ::raise(signal_number_);
  ::pthread_sigmask(SIG_SETMASK, &former_mask_, nullptr);
}

std::string child_result::reason() const {
  if (how == ending::timed_out) return "takes too long";
  if (how == ending::interrupted) return "interrupted";
  std::string_view rest = messages;
  while (rest.ends_with('\n')) rest.remove_suffix(1);
  const std::string_view last = rest.substr(rest.rfind('\n') + 1);
  if (!last.empty()) return std::string(last);
  return (how == ending::killed ? "killed by signal " : "exit status ") + std::to_string(status);
}

child_result process_runner::run(const std::vector<std::string>& command,
                                 const std::filesystem::path& directory,
                                 const line_handler& handle_line) const {
  using namespace std::chrono;
  const auto deadline = steady_clock::now() + time_limit_;
  const child_process child = start(command, directory, interrupted_.former_mask());

  child_result result;
  line_cutter lines(handle_line);
  std::array<pollfd, 3> watched = {{{child.output.get(), POLLIN, 0},
                                    {child.messages.get(), POLLIN, 0},
                                    {interrupted_.descriptor(), POLLIN, 0}}};
  // A descriptor of -1 is left alone by poll: that stream has ended. With both the child has, too.
  while (watched[0].fd >= 0 || watched[1].fd >= 0) {
    const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
    const int timeout = static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000));
    if (::poll(watched.data(), watched.size(), timeout) < 0) continue;
    if (watched[2].revents != 0) result.how = child_result::ending::interrupted;
    if (left <= 0) result.how = child_result::ending::timed_out;
    if (result.how != child_result::ending::exited) {
      ::kill(child.pid, SIGKILL);
      break;
    }
    const auto take_message = [&result](std::string_view bytes) {
      result.messages +=
          bytes.substr(0, max_messages - std::min(max_messages, result.messages.size()));
    };
    if (watched[0].revents != 0 &&
        !read_some(child.output, [&lines](std::string_view bytes) { lines.add(bytes); })) {
      watched[0].fd = -1;
    }
    if (watched[1].revents != 0 && !read_some(child.messages, take_message)) watched[1].fd = -1;
  }

  const int status = wait_for(child.pid);
  if (result.how != child_result::ending::exited) return result;
  if (WIFSIGNALED(status)) result.how = child_result::ending::killed;
  result.status = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
  // A terminal's interrupt reaches the child, too, and can do so before it reaches us.
  if (result.how == child_result::ending::killed && result.status == SIGINT) {
    result.how = child_result::ending::interrupted;
  }
  return result;
}

std::optional<std::string> find_program(const std::string& name, std::string_view beside) {
  const std::filesystem::path directory = std::filesystem::path(beside).parent_path();
  if (!directory.empty() && is_executable(directory / name)) {
    return std::filesystem::absolute(directory / name).string();
  }
  const char* const variable = std::getenv("PATH");
  std::string_view path = variable == nullptr ? "" : variable;
  while (!path.empty()) {
    const std::string_view entry = path.substr(0, path.find(':'));
    path.remove_prefix(std::min(path.size(), entry.size() + 1));
    const std::filesystem::path candidate = std::filesystem::path(entry) / name;
    if (is_executable(candidate)) return std::filesystem::absolute(candidate).string();
  }
  return std::nullopt;
}

}  // namespace trellion::batch
