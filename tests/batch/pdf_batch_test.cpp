#include "batches.h"
#include "pdf_files.h"
#include "tools.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;

class pdf_batches : public batches {
 protected:
  /// Runs it with other programs of these names in front of PATH.
  void run_with(const std::string& name, const std::string& script, const std::string& arguments) {
    fs::create_directory(directory.path() / "bin");
    write_script(directory, "bin/" + name, script);
    run(arguments, "PATH=\"$PWD/bin:$PATH\" ");
  }
};

TEST_F(pdf_batches, are_repaired_beside_eps) {
  directory.write("mesh.pdf",
                  document_of({"0 0 10 10 re f", mesh_content(20), "2 w 3 3 m 9 9 l S"}));
  fs::permissions(directory.path() / "mesh.pdf", fs::perms(0640));
  directory.write("Form.PDF", document_of({"/F Do", "0 0 10 10 re f", "/F Do"}, mesh_content(20)));
  directory.write("figure.eps", plain_figure(1));
  directory.write("text.pdf", document_of({"BT ET"}));
  EXPECT_EQ(run(".").status, 0);
  const std::map<std::string, std::string> expected = {
      {"./Form.PDF", "written"},
      {"./figure.eps", "written"},
      {"./mesh.pdf", "written"},
      {"./text.pdf", "nothing to join: no polygons found"}};
  EXPECT_EQ(results(), expected);
  EXPECT_EQ(told("./mesh.pdf", "way"), "pdf");
  EXPECT_EQ(told("./mesh.pdf", "picture"), "same");
  EXPECT_GE(std::stoi(told("./mesh.pdf", "polygons_before")), 400);
  EXPECT_LT(std::stoi(told("./mesh.pdf", "polygons_after")), 20);
  EXPECT_EQ(told("./mesh.pdf", "bytes_after"), std::to_string(directory.read("mesh_r.pdf").size()));
  EXPECT_EQ(fs::status(directory.path() / "mesh_r.pdf").permissions(), fs::perms(0640));
  EXPECT_TRUE(exists("Form_r.PDF"));

  // Results are no inputs.
  EXPECT_NE(run(".").out.find("4 files: 3 exists, 1 nothing to join"), std::string::npos);
  EXPECT_EQ(results(), expected) << "rows of what is still there stay";

  EXPECT_EQ(run("-f -r mesh.pdf").status, 0);
  EXPECT_EQ(results()["mesh.pdf"], "written");
  EXPECT_TRUE(told("mesh.pdf", "way").starts_with("pdf"));
}

TEST_F(pdf_batches, are_refused_in_their_words) {
  directory.write("cut.pdf", "%PDF-1.4\n");
  directory.write("none.pdf", "what is this?\n");
  EXPECT_EQ(run(".").status, 1);
  for (const auto* name : {"./cut.pdf", "./none.pdf"}) {
    EXPECT_TRUE(results()[name].starts_with("FAILED: ")) << results()[name];
    EXPECT_EQ(results()[name].find("no other way"), std::string::npos);
  }
}

TEST_F(pdf_batches, look_at_the_pages_that_changed_with_both_renderers) {
  const std::string mesh = mesh_content(20);
  directory.write("a.pdf", document_of({mesh, "0 0 10 10 re f", mesh + "0 0 1 rg 0 0 9 9 re f"}));
  // In this one's eyes the third page of every result looks like the second.
  run_with("pdftocairo",
           "case \"$*\" in *\"-f 3 \"*framed.pdf*) shift 6; "
           "set -- -tiff -tiffcompression none -singlefile -f 2 \"$@\";; esac\nexec \"$(command -v "
           "-p pdftocairo)\" \"$@\"",
           "a.pdf");
  EXPECT_TRUE(results()["a.pdf"].starts_with("WITHHELD: page 3: ")) << results()["a.pdf"];
  EXPECT_FALSE(exists("a_r.pdf"));
}

TEST_F(pdf_batches, may_lose_a_crack_but_no_line) {
  // In all eyes every result looks like the mesh without what is painted on it. That is to be a
  // crack that just holds centres of pixels, or a line of the width of one.
  const std::string mesh = mesh_content(20);
  directory.write("crack.pdf", document_of({mesh + "1 1 0 rg 30.0145 1 .001 58 re f"}));
  directory.write("line.pdf", document_of({mesh + "1 1 0 rg 30.0005 1 .03 58 re f"}));
  directory.write("seen", document_of({mesh}));
  const std::string seen = '"' + (directory.path() / "seen").string() + '"';
  fs::create_directory(directory.path() / "bin");
  for (const std::string name : {"gs", "pdftocairo"}) {
    write_script(directory, "bin/" + name,
                 "for a; do shift; case $a in *framed*) a=" + seen +
                     ";; esac; set -- \"$@\" \"$a\"; done\nexec \"$(command -v -p " + name +
                     ")\" \"$@\"");
  }
  run("crack.pdf line.pdf", "PATH=\"$PWD/bin:$PATH\" ");
  EXPECT_EQ(results()["crack.pdf"], "written");
  EXPECT_NE(told("crack.pdf", "picture"), "same") << "the crack is not seen at all";
  EXPECT_TRUE(results()["line.pdf"].starts_with("WITHHELD: the picture changed"));
}

TEST_F(pdf_batches, lend_their_joining_to_eps) {
  // Colours that alternate: in the text nothing shares an edge with its neighbour in a group.
  std::string page;
  for (int n = 0; n < 400; ++n) {
    const auto at = [](int value) { return std::to_string(5 + 10 * value) + ' '; };
    const int x = n % 20;
    const int y = n / 20;
    page += (n % 2 == 0 ? "0 0 1" : "1 0 0") + std::string(" setrgbcolor ") + at(x) + at(y) + "m " +
            at(x + 1) + at(y) + "l " + at(x + 1) + at(y + 1) + "l " + at(x) + at(y + 1) + "l h f\n";
  }
  directory.write("a.eps", figure_of(page));
  EXPECT_EQ(run("--auto a.eps").status, 0);
  EXPECT_EQ(results()["a.eps"], "written");
  EXPECT_EQ(told("a.eps", "way"), "detour pdf");
}

}  // namespace
}  // namespace trellion::testing
