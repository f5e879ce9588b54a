#include <algorithm>

#include "batch/pdf_support.h"
#include "batch/picture.h"
#include "batches.h"
#include "tools.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;

TEST_F(batches, keep_what_is_smaller_and_shows_the_same) {
  fs::create_directory(directory.path() / "in folder");
  const std::string picture = plain_figure(1);
  directory.write("in folder/-a.b.EPS", picture);
  fs::permissions(directory.path() / "in folder/-a.b.EPS", fs::perms(0640));
  directory.write("none.eps", figure_of(""));
  directory.write("small.eps", figure_of(to_postscript(random_mesh(1, 2, 1))));
  directory.write("single.eps",
                  figure_of("0 0 m 9 0 l 0 9 l f\n9 0 m 9 9 l 0 9 l f\n9 0 m 9 -9 l 0 0 l f\n"));
  EXPECT_EQ(run(". none.eps").status, 0);
  EXPECT_EQ(directory.read("in folder/-a.b.EPS"), picture);
  EXPECT_LT(directory.read("in folder/-a.b_r.EPS").size(), picture.size());
  EXPECT_EQ(fs::status(directory.path() / "in folder/-a.b_r.EPS").permissions(), fs::perms(0640));
  const std::map<std::string, std::string> expected = {
      {"./in folder/-a.b.EPS", "written"},
      {"./none.eps", "nothing to join: no polygons found; --auto tries other ways"},
      {"./single.eps",
       "nothing to join: no polygons found; -s1 finds some to join, --auto tries more"},
      {"./small.eps", "not kept: the result is not smaller"}};
  EXPECT_EQ(results(), expected);

  // A result is neither an input nor replaced, unless that is asked for.
  directory.write("in folder/-a.b_r.EPS", old_result);
  EXPECT_EQ(run("--keep . 'in folder/-a.b_r.EPS'").status, 0);
  EXPECT_EQ(results()["./in folder/-a.b.EPS"], "exists: -f replaces it");
  EXPECT_EQ(results()["in folder/-a.b_r.EPS"], "skipped: it is the result of another figure");
  EXPECT_EQ(results().size(), 5U);
  EXPECT_EQ(directory.read("in folder/-a.b_r.EPS"), old_result);
  EXPECT_TRUE(exists("small_r.eps"));
  shell("touch -d @1 in*/*_r.EPS", directory);
  EXPECT_EQ(run(".").status, 0);
  EXPECT_EQ(results()["./in folder/-a.b.EPS"], "exists: older than the figure; -f replaces it");
  EXPECT_EQ(run("-f --no-verify .").status, 0);
  EXPECT_NE(directory.read("in folder/-a.b_r.EPS"), old_result);
  EXPECT_EQ(results()["./small.eps"],
            "not kept: the result is not smaller; './small_r.eps' is of an earlier run");
}

TEST_F(batches, replace_what_is_unfinished_and_nothing_that_is_not_theirs) {
  for (const auto* name : {"a.eps", "b.eps", "c.eps"}) directory.write(name, plain_figure(1));
  directory.write("a_r.eps", "%!PS\n%%Processed by trellion version 3\n");
  directory.write("b_r.eps", plain_figure(2));
  directory.write("c_r.eps", "");
  directory.write("d.eps", figure_of(""));
  directory.write("d_r.eps", "");
  EXPECT_EQ(run("-n a.eps").status, 0);
  EXPECT_EQ(results()["a.eps"], "would be written: in place of 'a_r.eps', which is unfinished");
  for (const std::string options : {"", "-f "}) {
    EXPECT_EQ(run(options + "--no-verify --keep *.eps").status, 1);
    EXPECT_EQ(results()["a.eps"], "written");
    EXPECT_EQ(results()["b.eps"],
              "FAILED: 'b_r.eps' is no result of ours, and stays (--output-dir gets past it)");
    EXPECT_EQ(results()["d.eps"],
              "nothing to join: no polygons found; --auto tries other ways; "
              "'d_r.eps' is unfinished: remove it");
    EXPECT_EQ(results()["a_r.eps"], "skipped: it is the result of another figure");
    EXPECT_EQ(directory.read("b_r.eps"), plain_figure(2));
    EXPECT_GT(directory.read("a_r.eps").size(), 100U);
    EXPECT_TRUE(exists("b_r_r.eps")) << "it is a figure like any other";
  }
  EXPECT_EQ(directory.read("a_r.eps").size(), directory.read("c_r.eps").size());
}

TEST_F(batches, write_elsewhere_or_nowhere) {
  fs::create_directories(directory.path() / "in/deep");
  directory.write("in/deep/a.eps", plain_figure(1));
  directory.write("in/b\nb.eps", plain_figure(2));
  EXPECT_EQ(run("-n in").status, 0);
  EXPECT_EQ(results()["in/deep/a.eps"], "would be written");
  EXPECT_FALSE(exists("in/deep/a_r.eps"));
  // Names that are read from a list; a line feed can be in one.
  EXPECT_EQ(run("--output-dir out/new --files-from -", "printf 'in/b\\nb.eps\\0in' | ").status, 0);
  EXPECT_EQ(results()["in/b\\nb.eps"], "written");
  EXPECT_LT(directory.read("out/new/deep/a.eps").size(), plain_figure(1).size());
  EXPECT_TRUE(exists("out/new/b\nb.eps"));
  EXPECT_FALSE(exists("in/deep/a_r.eps") || exists("in/b\nb_r.eps"));

  // A run that is taken up again keeps the rows that it had.
  const std::string rows = directory.read("t.tsv");
  directory.write("list", "in\r\n");
  const outcome again = run("--output-dir out/new --files-from list");
  EXPECT_EQ(directory.read("t.tsv").substr(0, 400), rows.substr(0, 400));
  EXPECT_NE(again.out.find("2 files: 2 exists"), std::string::npos) << again.out;
  // But not of a figure that has become another since.
  shell("touch -d @1 out/new/deep/a.eps", directory);
  EXPECT_EQ(run("--output-dir out/new --files-from list").status, 0);
  EXPECT_EQ(results()["in/deep/a.eps"], "exists: older than the figure; -f replaces it");
  EXPECT_EQ(told("in/deep/a.eps", "picture"), "");
  EXPECT_EQ(told("in/b\\nb.eps", "picture"), "same");
  // Results are none to work on, whatever their names.
  EXPECT_EQ(run("-n . out/new/deep/a.eps").status, 0);
  const std::map<std::string, std::string> expected = {
      {"./in/deep/a.eps", "would be written"},
      {"./in/b\\nb.eps", "would be written"},
      {"out/new/deep/a.eps", "skipped: it is a result of trellion already"}};
  EXPECT_EQ(results(), expected);
  EXPECT_EQ(run("--output-dir out/new/deep out/new/deep/a.eps in/deep/a.eps").status, 0);
  EXPECT_EQ(results()["in/deep/a.eps"], "exists: older than the figure; -f replaces it");
  EXPECT_EQ(run("--output-dir in/deep in/deep/a.eps out/new/deep/a.eps").status, 1);
  EXPECT_EQ(directory.read("in/deep/a.eps"), plain_figure(1));
}

TEST_F(batches, repair_standard_input) {
  directory.write("a.eps", plain_figure(1));
  const outcome repaired = shell("trellion-batch --report t.tsv - <a.eps", directory);
  EXPECT_EQ(repaired.status, 0);
  EXPECT_LT(repaired.out.size(), plain_figure(1).size());
  EXPECT_NE(repaired.out.find("\n%%Processed by "), std::string::npos);
  EXPECT_NE(repaired.err.find("standard input: written, saves "), std::string::npos);
  EXPECT_NE(directory.read("t.tsv").find("\n-\twritten\t-s2\t"), std::string::npos);
  for (const auto* text : {"", "%!PS\nshowpage\n"}) {
    directory.write("b.eps", text);
    const outcome passed = shell("cat b.eps | trellion-batch -q -", directory);
    EXPECT_EQ(passed.out, text);
    EXPECT_EQ(passed.status, *text == 0 ? 1 : 0);
  }
}

TEST_F(batches, tell_failures_and_go_on) {
  directory.write("good.eps", plain_figure(2));
  directory.write("broken\x1b[2J.eps", plain_figure(3) + "(\n");
  directory.write("beside.eps",
                  figure_of("1000 0 translate\n" + to_postscript(random_mesh(4, 20, 20))));
  directory.write("empty.eps", "");
  directory.write("page.eps", "%PDF-1.4\n");
  directory.write("bitmap.eps",
                  "%!PS\n%%EndProlog\npdfStartPage\n%%EndPageSetup\ngsave\n[9 0 0 9 0 0] concat\n");
  directory.write("packed.eps", "\x1f\x8b...");
  directory.write("drawn.eps", "<svg>");
  const std::string preview = std::string("\xc5\xd0\xd3\xc6\x1e\0\0\0", 8);
  directory.write("dos.eps", preview + "\x09" + std::string(21, '\0') + "%!PS 1 2\n");
  directory.write("boxless.eps",
                  "%!PS\n/m{moveto}def /l{lineto}def /h{closepath}def /f{fill}def\n" +
                      to_postscript(random_mesh(5, 9, 9)) + "showpage\n");
  // Distances whose product wraps to zero make the corner at (2097.152 0) superfluous.
  directory.write("far.eps", figure_of("0 0 m 1048.576 0 l 1048.576 2097.156 l 0 2097.16 l h f\n"
                                       "1048.576 0 m 2097.152 0 l 2097.152 2097.152 l "
                                       "1048.576 2097.156 l h f\n"));
  const outcome all = run("missing.eps . -j2");
  EXPECT_EQ(all.status, 1);
  EXPECT_EQ((all.out + all.err).find('\x1b'), std::string::npos);
  const auto reason = [&](const std::string& file) { return results()[file]; };
  EXPECT_EQ(reason("./good.eps"), "written");
  EXPECT_TRUE(reason("./broken\\x1b[2J.eps").starts_with("FAILED: gs: Error: /syntaxerror"))
      << reason("./broken\\x1b[2J.eps");
  EXPECT_TRUE(reason("./beside.eps").starts_with("WITHHELD: the page shows nothing"));
  EXPECT_EQ(reason("./empty.eps"), "FAILED: it is empty");
  EXPECT_TRUE(reason("./page.eps").starts_with("FAILED: it is PDF")) << reason("./page.eps");
  EXPECT_TRUE(
      reason("./bitmap.eps").starts_with("nothing to join: pdftops has made it one bitmap"));
  EXPECT_EQ(reason("./packed.eps"), "FAILED: it is compressed: gunzip it");
  EXPECT_EQ(reason("./drawn.eps"), "FAILED: it is SVG or a page of the web, no EPS or PDF");
  EXPECT_TRUE(reason("./dos.eps").starts_with("WITHHELD: it has a DOS preview header"));
  EXPECT_EQ(reason("./boxless.eps"), "written");
  EXPECT_EQ(reason("./far.eps"),
            "WITHHELD: the outlines cover less than the polygons did; --auto tries other ways");
  EXPECT_EQ(reason("missing.eps"), "FAILED: there is no such file");
  EXPECT_FALSE(exists("beside_r.eps") || exists("broken\x1b[2J_r.eps"));

  const std::string polygons_left = told("./good.eps", "polygons_after");
  run("-f -m3 --no-verify good.eps");
  EXPECT_NE(told("good.eps", "polygons_after"), polygons_left);

  // A report replaces nothing but a report; the table is printed though it cannot be written.
  directory.write("notes", "mine");
  for (const auto* name : {"notes", "good_r.eps", "good.eps"}) {
    const std::string before = directory.read(name);
    EXPECT_NE(shell(std::string("trellion-batch good.eps --report ") + name, directory).status, 0);
    EXPECT_EQ(directory.read(name), before);
  }
  const outcome full = shell("trellion-batch good.eps --report /dev/full", directory);
  EXPECT_EQ(full.status, 1);
  EXPECT_NE(full.out.find("exists"), std::string::npos);
  EXPECT_NE(full.err.find("No space left on device"), std::string::npos);
}

TEST_F(batches, are_content_where_a_larger_result_is_right) {
  // Every second pair of numbers is relative to the one before it: what shares an edge in the text
  // does not on the page, but for the last two.
  std::string page = "/l {rlineto} def\n";
  for (const std::string x : {"0", "10", "20", "30", "40"}) {
    page += x + " 0 m 9 0 l " + x + " 9 l h f\n" + x + " 9 m 9 0 l 9 9 l h f\n";
  }
  page += "0 0 m 9 0 l 0 9 l h f\n9 0 m 0 9 l 9 9 l h f\n";
  directory.write("a.eps", figure_of(page));
  EXPECT_EQ(run("a.eps").status, 1);
  EXPECT_TRUE(results()["a.eps"].starts_with("WITHHELD: the picture changed"));
  EXPECT_EQ(run("--auto a.eps").status, 0);
  EXPECT_EQ(results()["a.eps"],
            "not kept: the result is not smaller; what another way led to is withheld");
  EXPECT_FALSE(exists("a_r.eps"));
}

/// The figures that are easy to repair in a wrong way. figures/draw.py says what each is about.
class hard_figures : public batches {
 protected:
  void repair(const std::string& options, const std::vector<std::string>& names) {
    std::string files;
    for (const auto& entry : fs::directory_iterator(TRELLION_FIGURES)) {
      const std::string name = entry.path().stem();
      if (entry.path().extension() != ".eps") continue;
      if (std::ranges::find(names, name) == names.end()) continue;
      fs::copy(entry.path(), directory.path());
      files += ' ' + name + ".eps";
    }
    run("-j2 " + options + files);
  }
  /// Looks with other eyes at what was written: at another resolution, in the way that documents
  /// show figures.
  void expect_same_picture(const std::string& name) const {
    const auto picture = [this](const std::string& file) {
      shell("gs -q -dSAFER -dBATCH -dNOPAUSE -dEPSCrop -sDEVICE=ppmraw -r1111 -sOutputFile=p.ppm " +
                file,
            directory);
      return batch::read_ppm(directory.read("p.ppm"), 1'000'000);
    };
    const auto difference = batch::compare(picture(name + ".eps"), picture(name + "_r.eps"), 4);
    EXPECT_EQ(difference->wrong, 0) << name;
    EXPECT_FALSE(difference->blank) << name;
  }
  [[nodiscard]] int number(const std::string& name, const std::string& column) const {
    const std::string text = told(name + ".eps", column);
    return text.empty() ? 0 : std::stoi(text);
  }
  [[nodiscard]] std::string result_of(const std::string& name) { return results()[name + ".eps"]; }
};

TEST_F(hard_figures, are_repaired_right_or_not_at_all) {
  repair("--auto", {"arrows", "colours", "fold", "forms", "levels", "outlines", "relative",
                    "strokes", "ticks"});
  const std::string no_other = "; no other way was better";
  const std::string changed = "WITHHELD: the picture changed";
  EXPECT_EQ(result_of("arrows"), "nothing to join: no two of 20 polygons share an edge" + no_other);
  EXPECT_TRUE(result_of("outlines").starts_with(changed)) << result_of("outlines");
  // The smallest result of this one is wrong, and another is right.
  EXPECT_EQ(told("relative.eps", "way"), batch::has_pdf ? "detour pdf" : "detour -s1");
  // Of two results that are right the smaller one, not the first.
  EXPECT_EQ(told("forms.eps", "way"), "-s1");
  for (const auto* name : {"colours", "fold", "forms", "levels", "relative", "strokes", "ticks"}) {
    EXPECT_EQ(result_of(name), "written") << name;
    EXPECT_LT(directory.read(name + std::string("_r.eps")).size(),
              directory.read(name + std::string(".eps")).size());
    EXPECT_LE(number(name, "hairlines_gs_after"), number(name, "hairlines_gs_before")) << name;
    EXPECT_LE(number(name, "hairlines_cairo_after"), number(name, "hairlines_cairo_before"));
    expect_same_picture(name);
  }
  // Meshes lose their hairlines, whoever draws them.
  EXPECT_LT(2 * number("fold", "hairlines_cairo_after"), number("fold", "hairlines_cairo_before"));
  EXPECT_LT(2 * number("fold", "hairlines_gs_after"), number("fold", "hairlines_gs_before"));
}

TEST_F(hard_figures, are_repaired_but_for_the_groups_that_change_the_picture) {
  repair("", {"culprit"});
  EXPECT_LT(4 * number("culprit", "bytes_after"), number("culprit", "bytes_before"));
  expect_same_picture("culprit");
}

TEST_F(hard_figures, are_closed_only_when_that_helps) {
  repair("--auto -r --hairlines", {"levels", "strokes", "colours"});
  for (const auto* name : {"levels", "strokes", "colours"}) {
    EXPECT_EQ(result_of(name), "written") << name;
    EXPECT_LE(number(name, "hairlines_gs_after"), number(name, "hairlines_gs_before")) << name;
    expect_same_picture(name);
  }
  EXPECT_TRUE(told("colours.eps", "way").ends_with(" -r"));
  EXPECT_EQ(told("strokes.eps", "way"), "-s1");
}

}  // namespace
}  // namespace trellion::testing
