#include "batch/programs.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;

TEST(programs, are_found_in_path) {
  const scratch_directory directory;
  const working_directory here(directory.path());
  const auto make = [&](const std::string& name, fs::perms permissions) {
    fs::create_directories(fs::path(name).parent_path());
    directory.write(name, "");
    fs::permissions(directory.path() / name, permissions);
  };
  make("plain/tool", fs::perms::owner_read);
  fs::create_directories("folder/tool");
  make("first/tool", fs::perms::owner_all);
  make("second/tool", fs::perms::owner_all);
  const std::string former = std::getenv("PATH");
  const auto search = [&](const std::string& path, const std::string& name) {
    ::setenv("PATH", path.c_str(), 1);
    const std::string found = batch::find_program(name).value_or("none");
    return found.starts_with('/') ? fs::canonical(found) : fs::path(found);
  };
  const fs::path root = fs::canonical(directory.path());
  EXPECT_EQ(search("absent:plain:folder:" + (root / "first").string() + ":second", "tool"),
            root / "first/tool");
  EXPECT_EQ(search("second:first", "tool"), root / "second/tool");
  EXPECT_EQ(search("plain:folder", "tool"), "none");
  EXPECT_EQ(search("", "tool"), "none");
  {
    const working_directory there(directory.path() / "second");
    EXPECT_EQ(search(":/absent", "tool"), root / "second/tool");
  }
  ::setenv("PATH", former.c_str(), 1);
}

}  // namespace
}  // namespace trellion::testing
