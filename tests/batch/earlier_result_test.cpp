#include "batch/earlier_result.h"

#include <gtest/gtest.h>

#include "pdf/result_mark.h"
#include "support.h"

namespace trellion::testing {
namespace {

namespace fs = std::filesystem;
using batch::earlier_result;
using batch::judge_result;

const std::string head = "%!PS\r\n%%Title: t\r\n";
const std::string line = "%%Processed by trellion version 3\n";

TEST(earlier_results, are_told_by_their_processing_line) {
  const std::string original = head + "/m {moveto} def\nshowpage\n1 1 m\nshowpage \n\n";
  EXPECT_EQ(judge_result(original, original), earlier_result::not_ours);
  EXPECT_EQ(judge_result(head + line + "1 1 m\nshowpage\nshowpage\n", original),
            earlier_result::complete);
  EXPECT_EQ(judge_result(head + "1 1 m\n" + line + "showpage\n", original),
            earlier_result::not_ours);
  // The original is itself a result of ours.
  const std::string twice = head + line + original;
  EXPECT_EQ(judge_result(twice, twice), earlier_result::not_ours);
  EXPECT_EQ(judge_result(head + line + twice, twice), earlier_result::complete);
}

TEST(earlier_results, that_do_not_go_on_to_the_end_are_unfinished) {
  const std::string original = head + "showpage\n1 1 m\nshowpage \n\n";
  for (const auto* rest : {"", "% more\n", "/p {stroke} bind def\n", "showpage\n1 1 m\n"}) {
    EXPECT_EQ(judge_result(head + line + rest, original), earlier_result::unfinished) << rest;
  }
  EXPECT_EQ(judge_result("", original), earlier_result::unfinished);
  // Whoever adds something keeps it, and the detour has an end of its own.
  for (const auto* rest : {"showpage\n1 1 m\nshowpage\nmine\n", "pdfEndPage\n%%EOF\n"}) {
    EXPECT_EQ(judge_result(head + line + rest, original), earlier_result::complete) << rest;
  }
  // Polygons at the end are others now.
  EXPECT_EQ(judge_result(head + line + "3 3 m 1 2 l f\n", head + "1 1 m 1 2 l f\n2 2 m 3 3 l f"),
            earlier_result::complete);
}

TEST(earlier_results, in_pdf_have_a_mark_or_are_copies) {
  const std::string original = "%PDF-1.4\n%%EOF\n";
  const std::string marked = "%PDF-1.4\n" + std::string(pdf::result_mark) + '\n';
  EXPECT_EQ(judge_result(original, original), earlier_result::complete);
  EXPECT_EQ(judge_result("%PDF-1.7\n%%EOF\n", original), earlier_result::not_ours);
  EXPECT_EQ(judge_result(marked + "%%EOF\n", original), earlier_result::complete);
  EXPECT_EQ(judge_result(marked, original), earlier_result::unfinished);
}

TEST(earlier_results, of_any_figure_are_told_by_their_marks) {
  const scratch_directory directory;
  const auto is_marked = [&](const std::string& text) {
    directory.write("a", text);
    EXPECT_EQ(batch::is_marked(text), batch::is_marked_file(directory.path() / "a"));
    return batch::is_marked(text);
  };
  std::string preview;
  while (preview.size() < 100'000) preview += "% 00ff00ff\n";
  const std::string pdf = "%PDF-1.4\n" + std::string(pdf::result_mark) + "\n1 0 obj\n";
  EXPECT_TRUE(is_marked(head + preview + line + "showpage\n"));
  EXPECT_TRUE(is_marked(pdf));
  for (const auto& text : {std::string(), head + "showpage\n", head + "1 1 m\n" + line + "f\n",
                           head + preview + line, std::string("%PDF-1.4\n1 0 obj\n")}) {
    EXPECT_FALSE(is_marked(text)) << text.substr(0, 100);
  }
  EXPECT_FALSE(batch::is_marked_file(directory.path() / "none"));
}

TEST(earlier_results, are_files) {
  const scratch_directory directory;
  const auto found = [&](const std::string& place) {
    return batch::look_for_result(directory.path() / place, directory.path() / "a.eps");
  };
  directory.write("a.eps", head);
  directory.write("a_r.eps", line);
  fs::create_directory(directory.path() / "folder");
  fs::create_symlink("nowhere", directory.path() / "dangling");
  fs::create_symlink("a_r.eps", directory.path() / "link");
  EXPECT_EQ(found("none"), earlier_result::none);
  EXPECT_EQ(found("folder"), earlier_result::not_ours);
  EXPECT_EQ(found("dangling"), earlier_result::not_ours);
  EXPECT_EQ(found("link"), earlier_result::unfinished);
}

}  // namespace
}  // namespace trellion::testing
