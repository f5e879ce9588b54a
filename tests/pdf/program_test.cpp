#include <gtest/gtest.h>

#include <filesystem>

#include "files.h"
#include "support.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;

const std::string mesh_on_page = one_page("/Contents 4 0 R", {stream(triangles(50))});
const std::string lone_polygon = one_page("/Contents 4 0 R", {stream(triangles(0))});

std::size_t n_entries(const scratch_directory& directory) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(directory.path()), fs::directory_iterator()));
}

TEST(program, writes_results_beside_the_files_and_goes_on_after_errors) {
  const scratch_directory directory;
  directory.write("a.pdf", mesh_on_page);
  directory.write("b.pdf", "no PDF");
  directory.write("c.pdf", lone_polygon);
  fs::permissions(directory.path() / "a.pdf", fs::perms::owner_read | fs::perms::group_read);
  const outcome done = shell("trellion-pdf a.pdf b.pdf none.pdf . c.pdf", directory);
  EXPECT_EQ(done.status, 1);
  EXPECT_EQ(done.err,
            "trellion-pdf: '.': it is a folder\n"
            "trellion-pdf: 'b.pdf': it is no PDF file\n"
            "trellion-pdf: 'none.pdf': there is no such file\n");
  const std::vector<std::string> lines = split(done.out, '\n');
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_TRUE(lines[0].starts_with("a.pdf: 100 -> 1 polygons, ")) << lines[0];
  EXPECT_TRUE(lines[0].ends_with(" s, a_r.pdf")) << lines[0];
  EXPECT_TRUE(lines[1].ends_with(" s, c_r.pdf (a copy: nothing to gain)")) << lines[1];
  EXPECT_EQ(directory.read("c_r.pdf"), lone_polygon);
  EXPECT_LT(directory.read("a_r.pdf").size(), mesh_on_page.size());
  EXPECT_EQ(fs::status(directory.path() / "a_r.pdf").permissions(),
            fs::perms::owner_read | fs::perms::group_read);
  EXPECT_EQ(directory.read("a.pdf"), mesh_on_page);
  EXPECT_EQ(n_entries(directory), 5U);
}

TEST(program, replaces_nothing_unasked_and_no_input_ever) {
  const scratch_directory directory;
  directory.write("a.pdf", lone_polygon);
  directory.write("old.pdf", "old");
  fs::create_hard_link(directory.path() / "a.pdf", directory.path() / "same.pdf");
  outcome done = shell("trellion-pdf -o old.pdf a.pdf", directory);
  EXPECT_EQ(done.err, "trellion-pdf: 'a.pdf': 'old.pdf' exists already (-f replaces it)\n");
  EXPECT_EQ(directory.read("old.pdf"), "old");
  done = shell("trellion-pdf -f -o same.pdf a.pdf", directory);
  EXPECT_EQ(done.err,
            "trellion-pdf: 'a.pdf': its result would take its place; it has not been touched\n");
  EXPECT_EQ(done.status, 1);
  EXPECT_EQ(shell("trellion-pdf -fo old.pdf a.pdf", directory).status, 0);
  EXPECT_EQ(directory.read("old.pdf"), lone_polygon);
  EXPECT_EQ(n_entries(directory), 3U);
  directory.write("a_r.pdf", "%PDF-1.4\n%%EOF\n");
  for (const auto* options : {"", "-f "}) {
    EXPECT_EQ(shell("trellion-pdf " + std::string(options) + "a.pdf", directory).err,
              "trellion-pdf: 'a.pdf': 'a_r.pdf' is no result of ours, and stays "
              "(-f with -o replaces it)\n");
  }
  directory.write("a_r.pdf", "");
  EXPECT_EQ(shell("trellion-pdf a.pdf", directory).status, 0) << "it was unfinished";
  EXPECT_EQ(directory.read("a_r.pdf"), lone_polygon);
  directory.write("b.eps", "%!PS\n");
  directory.write("b_r.eps", "");
  EXPECT_EQ(shell("trellion-pdf b.eps", directory).err,
            "trellion-pdf: 'b.eps': it is no PDF file\n");
}

TEST(program, tells_mistakes_on_the_command_line) {
  const scratch_directory directory;
  directory.write("a.pdf", mesh_on_page);
  for (const auto* arguments :
       {"", "--close=0 a.pdf", "--close=2.1 a.pdf", "--close=x a.pdf", "--precision=9e-9 a.pdf",
        "--precision=-1 a.pdf", "-o x.pdf a.pdf a.pdf", "--none a.pdf"}) {
    const outcome done = shell("trellion-pdf " + std::string(arguments), directory);
    EXPECT_EQ(done.status, 2) << arguments;
    EXPECT_EQ(split(done.err, '\n').size(), 1U) << done.err;
  }
  EXPECT_EQ(shell("PATH=${PATH%%:*}; trellion-pdf --strict a.pdf", directory).status, 2);
  EXPECT_EQ(n_entries(directory), 1U);
  const outcome done = shell("trellion-pdf --close --no-reorder --precision 1e-8 a.pdf", directory);
  EXPECT_TRUE(done.out.starts_with("a.pdf: 100 -> 1 ")) << done.out;
}

TEST(program, looks_at_the_pages_when_it_is_strict) {
  const scratch_directory directory;
  directory.write("a.pdf", mesh_on_page);
  const std::string strict = "trellion-pdf --strict a.pdf";
  fs::create_directory(directory.path() / "bin");
  // Has poppler draw the result larger.
  directory.write("bin/pdftocairo",
                  "#!/bin/sh\nPATH=${PATH#*:}\ncase \"$*\" in *result*) "
                  "set -- \"$@\" -scale-to 99 ;; esac\nexec pdftocairo \"$@\"\n");
  fs::permissions(directory.path() / "bin/pdftocairo", fs::perms::owner_all);
  outcome done = shell("PATH=$PWD/bin:$PATH " + strict, directory);
  EXPECT_EQ(done.err, "trellion-pdf: 'a.pdf': page 1 would look different\n");
  EXPECT_EQ(done.status, 1);
  // Interrupts whoever made the directory that it is run in.
  directory.write("bin/pdftocairo",
                  "#!/bin/sh\nmaker=${PWD%-*}\nkill -INT \"${maker##*-}\"\nexec sleep 600\n");
  done = shell("PATH=$PWD/bin:$PATH " + strict + "; test $? = 130", directory);
  EXPECT_EQ(done.status, 0) << done.err;
  EXPECT_EQ(n_entries(directory), 2U);
  EXPECT_EQ(shell(strict, directory).err, "");
  EXPECT_TRUE(fs::exists(directory.path() / "a_r.pdf"));
}

}  // namespace
}  // namespace trellion::testing
