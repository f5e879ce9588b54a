#include "process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

namespace trellion::batch {
namespace {

constexpr std::array watched_signals = {SIGINT, SIGTERM, SIGHUP};
constexpr std::size_t max_messages = 4096;
constexpr std::size_t max_line = 8192;
constexpr rlim_t max_file_size = rlim_t{8} << 30;
constexpr int cannot_be_run = 127;  // as shells have it
// Sent to the watcher by ourselves, to end it.
constexpr int farewell = SIGUSR1;

bool is_ignored(int signal_number) {
  struct sigaction action {};
  ::sigaction(signal_number, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

bool is_executable(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored) && ::access(path.c_str(), X_OK) == 0;
}

std::vector<char*> pointers_to(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
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

/// How large files may become: as we may make them, but no larger than the maximum.
rlimit limit_of_files() {
  rlimit limit{};
  ::getrlimit(RLIMIT_FSIZE, &limit);
  return {std::min(limit.rlim_cur, max_file_size), std::min(limit.rlim_max, max_file_size)};
}

/// A running program at the head of a process group of its own. Killed and waited for in the end,
/// unless it has ended before.
class child_process {
 public:
  child_process(pid_t pid, file_descriptor out, file_descriptor err)
      : pid_(pid), output_(std::move(out)), messages_(std::move(err)) {}
  child_process(const child_process&) = delete;
  child_process& operator=(const child_process&) = delete;
  ~child_process() {
    if (ended_) return;
    ::kill(-pid_, SIGKILL);
    wait(0);
  }

  /// Standard output and standard error.
  [[nodiscard]] const file_descriptor& output() const { return output_; }
  [[nodiscard]] const file_descriptor& messages() const { return messages_; }
  /// Whether it has ended; then `status` holds how.
  bool has_ended(int& status) {
    wait(WNOHANG);
    status = status_;
    return ended_;
  }

 private:
  void wait(int options) {
    pid_t found = 0;
    do {
      found = ::waitpid(pid_, &status_, options);
    } while (found < 0 && errno == EINTR);
    ended_ = found != 0;
  }

  pid_t pid_;
  file_descriptor output_;
  file_descriptor messages_;
  bool ended_ = false;
  int status_ = 0;
};

/// What the child does after fork. Nothing may be allocated in it, since another thread could have
/// been allocating when it was copied.
[[noreturn]] void become_program(char* const* arguments, char* const* variables,
                                 const char* directory, std::array<int, 3> streams,
                                 const sigset_t& signal_mask, const rlimit& file_limit) {
  ::setpgid(0, 0);
  std::signal(SIGPIPE, SIG_DFL);
  std::signal(SIGXFSZ, SIG_DFL);
  ::pthread_sigmask(SIG_SETMASK, &signal_mask, nullptr);
  ::setrlimit(RLIMIT_FSIZE, &file_limit);
  bool ready = ::chdir(directory) == 0;
  for (int i = 0; i < 3; ++i) {
    ready = ready && ::dup2(streams[static_cast<std::size_t>(i)], i) >= 0;
  }
  if (ready) ::execve(arguments[0], arguments, variables);
  ::_exit(cannot_be_run);
}

child_process start(const std::vector<std::string>& command, const std::filesystem::path& directory,
                    const sigset_t& signal_mask) {
  pipe_ends output = make_pipe();
  pipe_ends messages = make_pipe();
  const file_descriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  if (nothing.get() < 0) throw system_failure("open", "/dev/null", errno);
  const std::vector<std::string> environment = environment_with(directory);
  const std::vector<char*> arguments = pointers_to(command);
  const std::vector<char*> variables = pointers_to(environment);

  const pid_t pid = ::fork();
  if (pid < 0) throw system_failure("run", command.front(), errno);
  if (pid == 0) {
    become_program(arguments.data(), variables.data(), directory.c_str(),
                   {nothing.get(), output.write.get(), messages.write.get()}, signal_mask,
                   limit_of_files());
  }
  ::setpgid(pid, pid);  // in the child, too: whoever comes first
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
    // Whoever writes no line ends gets no more memory.
    line_ += bytes.substr(0, max_line - std::min(max_line, line_.size()));
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
  watcher_ = std::thread([this] { watch(); });
}

void interruption::watch() {
  using std::chrono::steady_clock;
  // Signals that come together mean one interruption.
  constexpr auto time_to_clean_up = std::chrono::seconds(2);
  steady_clock::time_point first;
  while (true) {
    siginfo_t info{};
    const int number = ::sigwaitinfo(&watched_, &info);
    if (number == farewell && info.si_pid == ::getpid()) return;
    if (number < 0 || number == farewell) continue;
    if (requested()) {
      if (steady_clock::now() - first > time_to_clean_up) end_by_signal();
      continue;
    }
    first = steady_clock::now();
    signal_number_ = number;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(wake_.write.get(), &byte, 1);
  }
}

interruption::~interruption() {
  ::pthread_kill(watcher_.native_handle(), farewell);
  watcher_.join();
}

bool interruption::requested() const { return signal_number_ != 0; }

void interruption::end_by_signal() const {
  if (!requested()) return;
  std::signal(signal_number_, SIG_DFL);
  ::pthread_sigmask(SIG_SETMASK, &former_mask_, nullptr);
  ::raise(signal_number_);
}

std::string child_result::reason() const {
  if (how == ending::timed_out) return "takes too long";
  if (how == ending::interrupted) return "interrupted";
  if (how == ending::exited && status == cannot_be_run) return "cannot be run";
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
  child_process child = start(command, directory, interrupted_.former_mask());

  child_result result;
  line_cutter lines(handle_line);
  const auto take_message = [&result](std::string_view bytes) {
    const std::size_t room = max_messages - std::min(max_messages, result.messages.size());
    result.messages += bytes.substr(0, room);
  };
  std::array<pollfd, 3> watched = {{{child.output().get(), POLLIN, 0},
                                    {child.messages().get(), POLLIN, 0},
                                    {interrupted_.descriptor(), POLLIN, 0}}};
  int status = 0;
  while (true) {
    // A descriptor of -1 is left alone by poll: that stream has ended. When both have, the child
    // has in all likelihood, too; should it go on, it is looked at now and then.
    const bool streams_ended = watched[0].fd < 0 && watched[1].fd < 0;
    if (streams_ended && child.has_ended(status)) break;
    const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
    const std::int64_t longest = streams_ended ? 5 : 60'000;
    const int timeout = static_cast<int>(std::clamp<std::int64_t>(left, 0, longest));
    for (pollfd& stream : watched) stream.revents = 0;
    ::poll(watched.data(), watched.size(), timeout);
    if (watched[2].revents != 0) result.how = child_result::ending::interrupted;
    if (left <= 0) result.how = child_result::ending::timed_out;
    if (result.how != child_result::ending::exited) return result;
    if (watched[0].revents != 0 &&
        !read_some(child.output(), [&lines](std::string_view bytes) { lines.add(bytes); })) {
      watched[0].fd = -1;
    }
    if (watched[1].revents != 0 && !read_some(child.messages(), take_message)) watched[1].fd = -1;
  }

  if (WIFSIGNALED(status)) result.how = child_result::ending::killed;
  result.status = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
  return result;
}

std::optional<std::string> find_program(const std::string& name) {
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

std::optional<std::string> find_program_beside(const std::string& name, const std::string& other) {
  const bool has_directory = other.find('/') != std::string::npos;
  const std::optional<std::string> called = has_directory ? other : find_program(other);
  std::error_code unknown;
  const std::filesystem::path real = std::filesystem::canonical(called.value_or(""), unknown);
  const std::filesystem::path beside = real.parent_path() / name;
  if (!unknown && is_executable(beside)) return beside.string();
  return find_program(name);
}

void open_standard_streams() {
  for (int i = STDIN_FILENO; i <= STDERR_FILENO; ++i) {
    // The lowest descriptor that is free is the one wanted. Reading from it gives nothing.
    if (::fcntl(i, F_GETFD) < 0) [[maybe_unused]]
      const int opened = ::open("/dev/null", O_RDONLY);
  }
}

}  // namespace trellion::batch
