#include "batch/descriptors.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "processes.h"

namespace trellion::testing {
namespace {

TEST(descriptors, are_not_inherited) {
  const batch::pipe_ends pipe = batch::make_pipe();
  const batch::connection_ends connection = batch::make_connection();
  for (const auto* end : {&pipe.read, &pipe.write, &connection.ours, &connection.theirs}) {
    EXPECT_EQ(::fcntl(end->get(), F_GETFD), FD_CLOEXEC);
  }
}

TEST(descriptors, leave_the_standard_streams_and_are_as_many_as_the_system_permits) {
  const int status = wait_for(in_process([] {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
    batch::open_standard_streams();
    const batch::pipe_ends pipe = batch::make_pipe();
    if (pipe.read.get() <= STDERR_FILENO || pipe.write.get() <= STDERR_FILENO) return 1;
    char c = 'x';
    if (::write(STDOUT_FILENO, &c, 1) >= 0 || ::write(STDERR_FILENO, &c, 1) >= 0) return 2;
    if (::read(STDIN_FILENO, &c, 1) > 0) return 3;
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = 30;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    if (batch::raise_file_limit() != 30) return 4;
    ::getrlimit(RLIMIT_NOFILE, &limit);
    return limit.rlim_cur == limit.rlim_max ? 0 : 5;
  }));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace trellion::testing
