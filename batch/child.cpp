#include "batch/child.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "batch/programs.h"

namespace trellion::batch {
namespace {

constexpr int time_to_end_group = 2000;  // milliseconds
constexpr int output_ahead = 1 << 20;    // bytes

std::vector<char*> pointers_to(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

/// Our environment, with the directory for temporary files replaced, and without what Ghostscript
/// would take as options: they could allow a figure to read and write files.
std::vector<std::string> environment_with(const std::filesystem::path& temporary) {
  std::vector<std::string> result = {"TMPDIR=" + temporary.string()};
  bool has_tunables = false;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view variable = *entry;
    if (variable.starts_with("GLIBC_TUNABLES=")) has_tunables = true;
    if (!variable.starts_with("TMPDIR=") && !variable.starts_with("GS_")) {
      result.emplace_back(variable);
    }
  }
  // Drawings are large: in large pages they cost the system less.
  if (!has_tunables) result.emplace_back("GLIBC_TUNABLES=glibc.malloc.hugetlb=1");
  return result;
}

/// How a process is started, as the system wants to be told.
class spawn_plan {
 public:
  explicit spawn_plan(const sigset_t& signal_mask) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
    ::posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    ::posix_spawnattr_setpgroup(&attributes_, 0);
    ::posix_spawnattr_setsigmask(&attributes_, &signal_mask);
    sigset_t ignored_by_us{};
    ::sigemptyset(&ignored_by_us);
    for (const int number : {SIGPIPE, SIGXFSZ, SIGCHLD}) ::sigaddset(&ignored_by_us, number);
    ::posix_spawnattr_setsigdefault(&attributes_, &ignored_by_us);
  }
  ~spawn_plan() {
    ::posix_spawnattr_destroy(&attributes_);
    ::posix_spawn_file_actions_destroy(&actions_);
  }
  spawn_plan(const spawn_plan&) = delete;
  spawn_plan& operator=(const spawn_plan&) = delete;

  void give(const file_descriptor& ours, int theirs) {
    ::posix_spawn_file_actions_adddup2(&actions_, ours.get(), theirs);
  }
  [[nodiscard]] pid_t start(const std::string& program, const std::vector<std::string>& arguments,
                            const std::vector<std::string>& environment) const {
    pid_t pid = 0;
    const int error = ::posix_spawn(&pid, own_executable, &actions_, &attributes_,
                                    pointers_to(arguments).data(), pointers_to(environment).data());
    if (error != 0) throw system_failure("run", program, error);
    return pid;
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

void drop(file_descriptor& descriptor) { const file_descriptor closed(std::move(descriptor)); }

}  // namespace

child::child(const std::vector<std::string>& command, const std::filesystem::path& directory,
             const child_limits& limits, const inheritance& inherited)
    : output_(make_pipe()), messages_(make_pipe()), lifeline_(make_connection()) {
  const file_descriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  if (nothing.get() < 0) throw system_failure("open", "/dev/null", errno);
  // Drawings are large: we are woken less often. Where that is refused it takes a little longer.
  ::fcntl(output_.write.get(), F_SETPIPE_SZ, output_ahead);
  spawn_plan plan(inherited.signal_mask);
  // In this order: none of ours is below 3, since the standard streams are open.
  plan.give(nothing, STDIN_FILENO);
  plan.give(output_.write, STDOUT_FILENO);
  plan.give(messages_.write, STDERR_FILENO);
  plan.give(lifeline_.theirs, lifeline_descriptor);
  supervisor_ =
      plan.start(command.front(), supervised(command, directory, limits, inherited.open_files),
                 environment_with(directory));
  drop(output_.write);
  drop(messages_.write);
  drop(lifeline_.theirs);
}

child::~child() { finish(); }

supervisor_report child::end() {
  supervisor_report report{};
  ssize_t count = 0;
  do {
    count = ::recv(lifeline().get(), &report, sizeof report, MSG_WAITALL);
  } while (count < 0 && errno == EINTR);
  finish();
  if (count == sizeof report) return report;
  return {supervisor_report::kind::ended, status_};  // somebody has killed the supervisor
}

/// Ends the lifeline. The group is killed from here, too, in case that its supervisor cannot.
void child::finish() {
  if (supervisor_ == 0) return;
  ::shutdown(lifeline().get(), SHUT_WR);
  pollfd answer{lifeline().get(), POLLIN, 0};
  ::poll(&answer, 1, time_to_end_group);
  ::kill(-supervisor_, SIGKILL);
  while (::waitpid(supervisor_, &status_, 0) < 0 && errno == EINTR) {
  }
  supervisor_ = 0;
}

}  // namespace trellion::batch
