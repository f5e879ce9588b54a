#include "batch/private_directory.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "processes.h"
#include "support.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;
using batch::private_directory;

TEST(private_directories, are_removed_when_their_owner_is_gone_and_only_then) {
  const scratch_directory directory;
  const witness watching(directory.path() / "witness");
  const private_directory mine(directory.path());
  const pid_t owner = in_process([&] {
    const private_directory abandoned(directory.path());
    std::ofstream(watching.path()) << abandoned.path().string() << std::flush;
    return ::pause();
  });
  const fs::path abandoned = watching.next();
  const std::string name = abandoned.filename();
  const auto clean = [&] { batch::remove_abandoned_directories(directory.path()); };
  clean();
  EXPECT_TRUE(fs::exists(abandoned / "lock"));
  ::kill(owner, SIGKILL);
  wait_for(owner);

  // Other hosts may hold locks that we do not see.
  const std::size_t begin = std::string_view(".trellion-batch-").size();
  const std::size_t end = name.find('-' + std::to_string(owner) + '-');
  ASSERT_LT(begin, end);
  const std::string host = name.substr(begin, end - begin);
  for (const std::string& other_host : {host + "-1", "not-" + host}) {
    const fs::path other =
        directory.path() / std::string(name).replace(begin, host.size(), other_host);
    fs::rename(abandoned, other);
    clean();
    EXPECT_TRUE(fs::exists(other / "lock")) << other;
    fs::rename(other, abandoned);
  }

  const fs::path outside = directory.path() / "outside";
  fs::create_directory(outside);
  directory.write("outside/lock", "");
  clean();
  EXPECT_FALSE(fs::exists(abandoned));
  fs::create_directory_symlink(outside, abandoned);
  clean();
  EXPECT_TRUE(fs::is_symlink(abandoned));
  fs::remove(abandoned);
  fs::create_directory(abandoned);
  fs::create_symlink(outside / "lock", abandoned / "lock");
  clean();
  EXPECT_TRUE(fs::exists(abandoned / "lock"));

  const auto make_old = [&](const fs::path& p) { shell("touch -d @1 " + p.string(), directory); };
  // Made, but never locked: somebody may be about to.
  fs::remove(abandoned / "lock");
  clean();
  EXPECT_TRUE(fs::exists(abandoned));
  make_old(abandoned);
  clean();
  EXPECT_FALSE(fs::exists(abandoned));
  fs::remove(mine / "lock");
  make_old(mine.path());
  clean();
  EXPECT_TRUE(fs::exists(mine.path()));
  EXPECT_TRUE(fs::exists(outside / "lock"));
}

}  // namespace
}  // namespace trellion::testing
