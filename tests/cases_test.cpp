// Every directory in tests/cases is a run of the program: its `command` is run in a copy of the
// directory, and the console, the exit status and every file named in `expected` are compared.

#include <gtest/gtest.h>

#include "support.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> case_names() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(TRELLION_CASES)) {
    names.push_back(entry.path().filename());
  }
  return names;
}

class cases : public ::testing::TestWithParam<std::string> {};

TEST_P(cases, runs_as_expected) {
  const fs::path source = fs::path(TRELLION_CASES) / GetParam();
  const scratch_directory directory;
  fs::copy(source, directory.path(), fs::copy_options::recursive);

  const outcome result = shell(directory.read("command"), directory);
  EXPECT_EQ(masked(result.out), directory.read("expected/console"));
  EXPECT_EQ(result.err, directory.read("expected/complaint"));
  EXPECT_EQ(result.status, fs::exists(source / "expected/complaint") ? 2 : 0);
  for (const auto& entry : fs::directory_iterator(source / "expected")) {
    const std::string name = entry.path().filename();
    if (name == "console" || name == "complaint") continue;
    EXPECT_EQ(masked(directory.read(name)), directory.read("expected/" + name)) << name;
  }
  for (const auto& entry : fs::directory_iterator(directory.path())) {
    const std::string name = entry.path().filename();
    EXPECT_TRUE(fs::exists(source / name) || fs::exists(source / "expected" / name))
        << "left behind: " << name;
  }
}

INSTANTIATE_TEST_SUITE_P(directory, cases, ::testing::ValuesIn(case_names()),
                         [](const auto& instance) { return instance.param; });

}  // namespace
}  // namespace trellion::testing
