#include "batch/descriptors.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace trellion::batch {
namespace {

run_error no_more(const char* what) {
  return run_error(std::string("cannot make a ") + what + ": " +
                   std::generic_category().message(errno));
}

}  // namespace

pipe_ends make_pipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw no_more("pipe");
  return {file_descriptor(ends[0]), file_descriptor(ends[1])};
}

connection_ends make_connection() {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw no_more("connection");
  }
  return {file_descriptor(ends[0]), file_descriptor(ends[1])};
}

void open_standard_streams() {
  for (int i = STDIN_FILENO; i <= STDERR_FILENO; ++i) {
    // The lowest descriptor that is free is the one wanted. Reading from it gives nothing.
    if (::fcntl(i, F_GETFD) < 0) [[maybe_unused]]
      const int opened = ::open("/dev/null", O_RDONLY);
  }
}

std::uint64_t raise_file_limit() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return RLIM_INFINITY;
  const rlim_t former = limit.rlim_cur;
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limit);  // where that is refused, fewer jobs find room
  return former;
}

}  // namespace trellion::batch
