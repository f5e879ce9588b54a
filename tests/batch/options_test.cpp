#include "batch/options.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support.h"

namespace trellion::testing {
namespace {

using namespace batch;

batch_options parsed(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "trellion-batch");
  return parse_options(static_cast<int>(arguments.size()), arguments.data());
}

/// The exit status with which a command line ends the program; -1 when it does not.
int status_of(const std::vector<const char*>& arguments) {
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  int status = -1;
  try {
    parsed(arguments);
  } catch (const early_exit& end) {
    status = end.status;
  }
  const bool said = !::testing::internal::GetCapturedStdout().empty();
  const bool complained = !::testing::internal::GetCapturedStderr().empty();
  EXPECT_EQ(said, status == 0);
  EXPECT_EQ(complained, status == 2);
  return status;
}

TEST(options, are_read) {
  const batch_options options = parsed({"-r", "a.eps", "-m6", "-s", "1", "-j3", "--time-limit", "7",
                                        "--memory-limit", "100", "--report", "t.tsv", "b"});
  EXPECT_EQ(options.inputs, (std::vector<std::filesystem::path>{"a.eps", "b"}));
  EXPECT_TRUE(options.remove_mesh);
  EXPECT_EQ(options.merge_limit, 6);
  EXPECT_EQ(options.min_separators, 1);
  EXPECT_EQ(options.jobs, 3U);
  EXPECT_EQ(options.time_limit, std::chrono::seconds(7));
  EXPECT_EQ(options.memory_limit, std::uint64_t{100} << 20);
  EXPECT_EQ(options.report, "t.tsv");
  EXPECT_FALSE(options.replace || options.keep_all || options.auto_way || options.detour);
  EXPECT_EQ(options.verify, options.tools.gs.has_value());
  EXPECT_FALSE(parsed({"--no-verify", "a"}).verify);
  const batch_options listed = parsed({"--files-from", "-", "--output-dir", "o", "-n"});
  EXPECT_EQ(listed.files_from, "-");
  EXPECT_EQ(listed.output_directory, "o");
  EXPECT_TRUE(listed.dry_run && !listed.is_filter() && parsed({"-"}).is_filter());
}

TEST(options, that_make_no_sense_are_refused) {
  EXPECT_EQ(status_of({"--help"}), 0);
  EXPECT_EQ(status_of({"--version"}), 0);
  // Two have forgotten the name of the report; "-" is for one figure alone.
  const std::vector<std::vector<const char*>> mistakes = {{},
                                                          {"--auto", "--detour", "a"},
                                                          {"--auto", "-s1", "a"},
                                                          {"--verify", "--no-verify", "a"},
                                                          {"-j0", "a"},
                                                          {"-s0", "a"},
                                                          {"--what", "a"},
                                                          {"--report", "a.EPSI", "b.eps"},
                                                          {"--report", "a.pdf", "b.eps"},
                                                          {"-", "b.eps"},
                                                          {"-", "--files-from", "-"},
                                                          {"-", "--output-dir", "d"},
                                                          {"-", "--dry-run"}};
  for (const auto& arguments : mistakes) {
    EXPECT_EQ(status_of(arguments), 2) << (arguments.empty() ? "nothing" : arguments.front());
  }
  // What needs a program that is not there.
  const std::string path = std::getenv("PATH");
  ::setenv("PATH", "", 1);
  for (const char* const needy : {"--verify", "--detour"}) {
    EXPECT_EQ(status_of({needy, "a"}), 2) << needy;
  }
  ::setenv("PATH", path.c_str(), 1);
}

}  // namespace
}  // namespace trellion::testing
