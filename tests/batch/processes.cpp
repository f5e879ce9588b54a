#include "processes.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <exception>
#include <utility>

namespace trellion::testing {
namespace {

constexpr int minute = 60'000;

int open_pipe(const std::string& path) {
  ::mkfifo(path.c_str(), 0600);
  return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

}  // namespace

witness::witness(std::filesystem::path path) : path_(std::move(path)), pipe_(open_pipe(path_)) {}

std::string witness::next() const {
  pollfd pipe{pipe_.get(), POLLIN, 0};
  ::poll(&pipe, 1, minute);
  std::array<char, 4096> buffer{};
  const ssize_t count = ::read(pipe_.get(), buffer.data(), buffer.size());
  return count > 0 ? std::string(buffer.data(), static_cast<std::size_t>(count)) : "";
}

bool witness::all_gone() const {
  pollfd pipe{pipe_.get(), 0, 0};
  return ::poll(&pipe, 1, minute) == 1;
}

pid_t in_process(const std::function<int()>& work) {
  const pid_t process = ::fork();
  if (process != 0) return process;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // a test that takes too long is not to leave it behind
  sigset_t none{};
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  const rlimit no_core{0, 0};
  ::setrlimit(RLIMIT_CORE, &no_core);
  int status = 99;
  try {
    status = work();
  } catch (const std::exception&) {
  }
  ::_exit(status);
}

int wait_for(pid_t process, int options) {
  int status = -1;
  ::waitpid(process, &status, options);
  return status;
}

}  // namespace trellion::testing
