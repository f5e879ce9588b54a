// measured LIMIT PROGRAM [ARGUMENT...]: runs the program, its console to nowhere, and prints
//
//     STATUS CPU_MICROSECONDS PEAK_KILOBYTES
//
// STATUS is the exit status, 128 + N after signal N, or "limit" when the program had used LIMIT
// seconds of processor time (0: no limit).
//
// A program of its own because the peak that the system reports for a child begins with that of
// the process that started it: started from a script it would be the interpreter's at least. This
// one is linked statically and stays well below anything worth measuring.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int failure_status = 2;

int complain(const char* what, int error_number) {
  std::fprintf(stderr, "measured: %s: %s\n", what, std::strerror(error_number));
  return failure_status;
}

long long microseconds(const timeval& time) {
  return static_cast<long long>(time.tv_sec) * 1'000'000 + time.tv_usec;
}

int set_limit(rlim_t seconds) {
  const rlimit limit{seconds, RLIM_INFINITY};
  return seconds == 0 ? 0 : setrlimit(RLIMIT_CPU, &limit);
}

int spawn(char* const arguments[], pid_t& child) {
  posix_spawn_file_actions_t actions;
  int error = posix_spawn_file_actions_init(&actions);
  if (error != 0) return error;
  error = posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  if (error == 0) {
    error = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments, environ);
  }
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

void report(int status, const rusage& usage) {
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU) {
    std::fputs("limit", stdout);
  } else {
    std::printf("%d", WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status));
  }
  std::printf(" %lld %ld\n", microseconds(usage.ru_utime) + microseconds(usage.ru_stime),
              usage.ru_maxrss);
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc < 3) {
    std::fputs("Usage: measured LIMIT PROGRAM [ARGUMENT...]\n", stderr);
    return failure_status;
  }
  if (set_limit(std::strtoul(argv[1], nullptr, 10)) != 0) return complain("setrlimit", errno);

  pid_t child = 0;
  if (const int error = spawn(argv + 2, child); error != 0) return complain(argv[2], error);
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) < 0) return complain("wait4", errno);
  report(status, usage);
  return 0;
}
