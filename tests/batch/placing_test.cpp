#include "batch/placing.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;
using batch::existing_file;

mode_t mode_of(const fs::path& path) {
  struct stat status {};
  ::stat(path.c_str(), &status);
  return status.st_mode & 07777;
}

TEST(placing, replaces_only_what_it_may_and_permits_what_the_input_permits) {
  const scratch_directory directory;
  const fs::path place = directory.path() / "place";
  const auto put = [&](mode_t input_mode, existing_file treatment) {
    directory.write("new", "new");
    fs::permissions(directory.path() / "new", fs::perms::all);
    return batch::place(directory.path() / "new", place, input_mode, treatment);
  };
  for (const existing_file treatment : {existing_file::keep, existing_file::replace}) {
    EXPECT_TRUE(put(S_IFREG | S_ISUID | 0640, treatment));
    EXPECT_EQ(directory.read("place"), "new");
    EXPECT_EQ(mode_of(place), 0640U);
    fs::remove(place);
  }
  directory.write("place", "old");
  EXPECT_FALSE(put(0600, existing_file::keep));
  EXPECT_EQ(directory.read("place"), "old");
  EXPECT_TRUE(put(0444, existing_file::replace));
  EXPECT_EQ(directory.read("place"), "new");
  EXPECT_EQ(mode_of(place), 0444U);

  // A link is there, too, even one that leads nowhere; what it leads to is never written.
  fs::remove(place);
  fs::create_symlink("nowhere", place);
  EXPECT_FALSE(put(0600, existing_file::keep));
  EXPECT_TRUE(put(0600, existing_file::replace));
  EXPECT_FALSE(fs::is_symlink(place));
  EXPECT_FALSE(fs::exists(directory.path() / "nowhere"));
}

TEST(placing, tells_what_failed) {
  const scratch_directory directory;
  const fs::path folder = directory.path() / "folder";
  fs::create_directory(folder);
  directory.write("folder/entry", "");
  directory.write("new", "new");
  fs::create_symlink("new", directory.path() / "link");
  const auto put = [&](const std::string& file, const fs::path& place, existing_file treatment) {
    return batch::place(directory.path() / file, place, 0600, treatment);
  };
  EXPECT_THROW(put("new", directory.path() / "absent/place", existing_file::keep), run_error);
  EXPECT_THROW(put("new", folder, existing_file::replace), run_error);
  EXPECT_FALSE(put("new", folder, existing_file::keep));
  EXPECT_THROW(put("absent", directory.path() / "place", existing_file::replace), run_error);
  EXPECT_THROW(put("link", directory.path() / "place", existing_file::keep), run_error);
  EXPECT_EQ(directory.read("new"), "new");
  EXPECT_FALSE(fs::exists(fs::symlink_status(directory.path() / "place")));
}

}  // namespace
}  // namespace trellion::testing
