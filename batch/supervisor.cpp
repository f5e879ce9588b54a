#include "batch/supervisor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <string_view>

#include "batch/programs.h"

namespace trellion::batch {
namespace {

constexpr std::string_view hidden_option = "--supervise";
constexpr int program_at = 6;  // after our name, the option, three limits and the directory

/// What `supervised` has put into the arguments.
struct task {
  rlim_t memory;
  rlim_t file_size;
  rlim_t open_files;
  const char* directory;
  char* const* program;
};

rlim_t number_in(std::string_view digits) {
  rlim_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

/// Whether the arguments are meant: nobody gives us a lifeline and a group by typing the option.
bool is_supervisor(int argc, char* const* argv) {
  struct stat lifeline {};
  return argc > program_at && argv[1] == hidden_option && ::getpgrp() == ::getpid() &&
         ::fstat(lifeline_descriptor, &lifeline) == 0 && S_ISSOCK(lifeline.st_mode);
}

void report(supervisor_report::kind what, int value) {
  const supervisor_report message{what, value};
  ::send(lifeline_descriptor, &message, sizeof message, MSG_NOSIGNAL);
}

template <class Resource>
void set_limit(Resource resource, rlim_t most) {
  rlimit limit{};
  ::getrlimit(resource, &limit);
  limit.rlim_max = std::min(limit.rlim_max, most);
  limit.rlim_cur = std::min(limit.rlim_cur, most);
  ::setrlimit(resource, &limit);
}

/// Sets what a program expects of the limit on files, and may raise again.
void lower_file_limit(rlim_t open_files) {
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::min(limit.rlim_max, open_files);
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

/// Returns where the program is this one.
void become_program(const task& given, pid_t supervisor, const sigset_t& mask) {
  // Somebody may kill us and the supervisor at once.
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != supervisor) ::_exit(1);
  set_limit(RLIMIT_CORE, 0);
  set_limit(RLIMIT_FSIZE, given.file_size);
  set_limit(RLIMIT_AS, given.memory);
  lower_file_limit(given.open_files);
  ::sigprocmask(SIG_SETMASK, &mask, nullptr);
  if (::chdir(given.directory) == 0) {
    if (given.program[0] == std::string_view(own_executable)) {
      ::close(lifeline_descriptor);
      return;
    }
    ::execv(given.program[0], given.program);
  }
  report(supervisor_report::kind::not_started, errno);
  ::_exit(1);
}

/// Waits for the program and returns its status. Returns early when the lifeline ends.
int wait_for(pid_t program, const sigset_t& awaiting) {
  pollfd lifeline{lifeline_descriptor, POLLIN, 0};
  while (true) {
    int status = 0;
    const pid_t ended = ::waitpid(-1, &status, WNOHANG);
    if (ended == program) return status;
    if (ended > 0) continue;  // left behind by its parent
    if (::ppoll(&lifeline, 1, nullptr, &awaiting) > 0) return 0;
  }
}

/// Kills the group and waits until it is gone, so that nobody writes anything any more.
void end_group() {
  // Out of the way first, to where our parent is; the group keeps our number as its own. Without
  // a parent there is nobody to tell, and we may go with the group.
  const pid_t group = ::getpid();
  if (::setpgid(0, ::getpgid(::getppid())) != 0) ::kill(0, SIGKILL);
  ::kill(-group, SIGKILL);
  while (::waitpid(-group, nullptr, 0) > 0 || errno == EINTR) {
  }
}

/// The work of a supervisor. It is deaf to all signals but those that nobody can block. Returns in
/// the child, where that goes on as this program.
void supervise(const task& given) {
  sigset_t all{};
  sigset_t former{};
  ::sigfillset(&all);
  ::sigprocmask(SIG_SETMASK, &all, &former);
  std::signal(SIGCHLD, [](int) {});  // wakes ppoll
  sigset_t awaiting = all;
  ::sigdelset(&awaiting, SIGCHLD);
  ::closefrom(lifeline_descriptor + 1);
  ::fcntl(lifeline_descriptor, F_SETFD, FD_CLOEXEC);
  // Those of the group whose parents end become ours to wait for.
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);

  const pid_t self = ::getpid();
  const pid_t program = ::fork();
  if (program == 0) return become_program(given, self, former);
  if (program < 0) {
    report(supervisor_report::kind::not_started, errno);
    ::_exit(1);
  }
  const int status = wait_for(program, awaiting);
  end_group();
  report(supervisor_report::kind::ended, status);
  ::_exit(0);
}

}  // namespace

std::vector<std::string> supervised(const std::vector<std::string>& command,
                                    const std::filesystem::path& directory,
                                    const child_limits& limits, std::uint64_t open_files) {
  std::uint64_t memory = limits.memory;
#ifdef __SANITIZE_ADDRESS__
  // This executable, as a worker, reserves more addresses than there is memory.
  if (command.front() == own_executable) memory = RLIM_INFINITY;
#endif
  std::vector<std::string> arguments = {
      "trellion-batch",           std::string(hidden_option),
      std::to_string(memory),     std::to_string(limits.file_size),
      std::to_string(open_files), directory.string()};
  arguments.insert(arguments.end(), command.begin(), command.end());
  return arguments;
}

void supervise_if_asked(int& argc, char**& argv) {
  if (!is_supervisor(argc, argv)) return;
  supervise(
      {number_in(argv[2]), number_in(argv[3]), number_in(argv[4]), argv[5], argv + program_at});
  argc -= program_at;
  argv += program_at;
}

}  // namespace trellion::batch
