#include "graphics.h"

#include <gtest/gtest.h>

#include "support.h"
#include "walk.h"

namespace trellion::testing {
namespace {

/// A queue of the polygons of a text, at least two, in a store.
ps_path_queue queue_of(const std::string& text, path_store& store) {
  captured_text ignored;
  ps_path_queue result(store);
  walk(token_list(text), mlhf(), ignored,
       [&](polygon_group& group) { result = tokens_to_ps_path_queue(group, store, ignored); });
  return result;
}

// One test, because the frames of a program are numbered through.
TEST(frames, are_numbered_pictures_with_a_script) {
  const scratch_directory directory;
  std::filesystem::create_directory(directory.path() / "intermediate");
  const working_directory here(directory.path());
  captured_text console;

  path_store empty_store;
  const ps_path_queue nothing(empty_store);
  create_intermediate_eps(empty_store, {&nothing, 1}, console);
  EXPECT_EQ(console.text(),
            "trellion: warning --- could not determine bounding box for\n"
            "                      intermediate eps. No graphics created.\n\n");
  EXPECT_TRUE(std::filesystem::is_empty("intermediate"));

  directory.write("intermediate/script", "left over from an earlier run\n");

  // A box of -500, -499, 20499 and 8500 thousandths: halves go away from zero.
  const std::string text = "-.5 0.499 m 7 1 l 0.5 8.5 l h f 7 1 m 20.499 -0.499 l 7 8.5 l h f";
  path_store store;
  const ps_path_queue queue = queue_of(text, store);
  create_intermediate_eps(store, {&queue, 1}, console);
  create_intermediate_eps(store, {&queue, 1}, console, outline_ending::stroked);
  EXPECT_EQ(directory.read("intermediate/script"),
            "epstopdf frame00001.eps\nrm frame00001.eps\nepstopdf frame00002.eps\n"
            "rm frame00002.eps\n");
  // The cursors are on the second points, as cleaning leaves them.
  EXPECT_EQ(directory.read("intermediate/frame00001.eps"),
            "%!PS-Adobe-3.0 EPSF-1.2\n%%BoundingBox:       -1        0       20        9 \n"
            "0 setlinewidth\n7 1 moveto\n0.5 8.5 lineto -.5 0.499 lineto \nclosepath\n"
            "20.499 -0.499 moveto\n7 8.5 lineto 7 1 lineto \nclosepath\n%EOF\n");

  // Ghostscript strokes as many outlines as there are paths.
  const outcome counted = shell(
      "{ echo '/n 0 def /stroke {/n n 1 add def newpath} def'; cat intermediate/frame00002.eps; "
      "echo 'n =='; } | gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=nullpage -",
      directory);
  EXPECT_EQ(counted.out, "2\n") << counted.err;
}

TEST(frames, of_a_whole_file_dissolve_the_mesh) {
  const scratch_directory directory;
  directory.write("mesh.eps", to_postscript(random_mesh(5, 6, 6)));
  ASSERT_EQ(shell("trellion_frames mesh.eps out", directory).status, 0);
  const auto size = [&](char number) {
    return directory.read(std::string("out/intermediate/frame0000") + number + ".eps").size();
  };
  EXPECT_LT(size('2'), size('1'));
  EXPECT_LT(size('3'), size('2'));
  EXPECT_EQ(shell("trellion_frames mesh.eps", directory).status, 2);
}

}  // namespace
}  // namespace trellion::testing
