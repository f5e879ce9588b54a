#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "drawn_content.h"
#include "few_resources.h"
#include "pdf/content_repair.h"
#include "random_content.h"

namespace trellion::pdf {
namespace {

const testing::few_resources resources;

std::string repaired(std::string_view content, const content_settings& settings = {},
                     bool state_known = true) {
  content_surroundings surroundings{resources};
  surroundings.state_known = state_known;
  content_summary summary;
  return repair_content(content, surroundings, settings, summary).value_or(std::string(content));
}

// Two triangles that become a square.
const std::string two = "0 0 m 1 0 l 1 1 l h f 0 0 m 1 1 l 0 1 l h f ";

TEST(content, paints_the_same_in_the_same_state) {
  std::size_t bytes_before = 0;
  std::size_t bytes_after = 0;
  for (unsigned seed = 0; seed < 80; ++seed) {
    std::mt19937 random(seed);
    const std::string content =
        testing::random_content([&](unsigned n) { return static_cast<unsigned>(random() % n); });
    content_surroundings surroundings{resources};
    surroundings.state_known = seed % 2 == 0;
    for (const closing close : {closing::none, closing::under}) {
      for (const bool reorder : {false, true}) {
        content_settings settings;
        settings.close = close;
        settings.reorder = reorder;
        const std::string result = repaired(content, settings, surroundings.state_known);
        const testing::drawn_content before(content, surroundings, settings);
        const testing::drawn_content after(result, surroundings, settings);
        ASSERT_EQ(before.difference(after), "") << seed << '\n' << content << '\n' << result;
        if (close == closing::none) {
          ASSERT_LE(result.size(), content.size());
        }
        bytes_before += content.size();
        bytes_after += result.size();
      }
    }
  }
  EXPECT_LT(bytes_after * 10, bytes_before * 9);
}

TEST(content, joins_what_stands_together) {
  const std::string square = "\n0 0 1 1 re f\n";
  EXPECT_EQ(repaired(two), square);
  EXPECT_EQ(repaired("0.00 g 0 g /A gs 1 0 0 1 0 0 cm n q 1 g Q " + two), square);
  EXPECT_EQ(repaired("1 0 0 rg q " + two + "BT ET Q"), "1 0 0 rg q" + square + "BT ET Q");
  // The colour is restored for what comes, though not in front of Q.
  EXPECT_EQ(repaired("1 g " + two + "0 g BT ET"), "\n1 g" + square + "0 g\nBT ET");
  EXPECT_EQ(repaired("q BT ET 1 g " + two + "0 g Q"), "q BT ET\n1 g" + square + "Q");
}

TEST(content, keeps_the_way_in_which_diagonals_are_drawn) {
  const std::string left = "0 0 m 1 1 l 2 0 l h f 2 0 m 1 -1 l 0 0 l h f ";
  const std::string right = "2 0 m 1 1 l 0 0 l h f 0 0 m 1 -1 l 2 0 l h f ";
  EXPECT_EQ(repaired(left), "\n1 1 m 2 0 l 1 -1 l 0 0 l f\n");
  EXPECT_EQ(repaired(right), "\n2 0 m 1 1 l 0 0 l 1 -1 l f\n");
  // Also behind what is split off, where numbers follow in another order.
  EXPECT_EQ(repaired("1 g " + two + "q " + left + "BT ET Q"),
            "\n1 g\n0 0 1 1 re f\nq\n1 -1 m 0 0 l 1 1 l 2 0 l f\nBT ET Q");
}

TEST(content, folds_a_stroke_into_its_fill) {
  const std::string first = "0 0 m 1 0 l 1 1 l h ";
  const std::string second = "0 0 m 1 1 l 0 1 l h ";
  const std::string joined = "\n0 0 1 1 re B\n";
  EXPECT_EQ(repaired("1 j " + first + "B " + second + "b "), "\n1 j" + joined);
  EXPECT_EQ(repaired("1 j " + first + "f " + first + "S " + second + "f* 0 G " + second + "s "),
            "\n1 j" + joined);
  // Corners show where a wide pen has mitres, and where it begins and ends.
  EXPECT_EQ(repaired(first + "f " + first + "S " + second + "f " + second + "S "),
            "\n" + first + "B\n" + second + "B\n");
  const std::string open = "0 0 m 1 0 l 1 1 l ";
  EXPECT_EQ(repaired("1 j " + open + "f " + open + "S " + second + "B       "),
            "\n1 j\n" + open + "B\n0 0 m 1 1 l 0 1 l h B\n");
  // A corner that none closes stays open, unless round ends close it.
  const std::string back = "0 0 m 1 1 l 0 1 l 0 0 l ";
  EXPECT_EQ(repaired("2 j " + open + "0 0 l B " + back + "B "),
            "\n2 j\n0 0 m 1 0 l 1 1 l 0 1 l 0 0 l B\n");
  EXPECT_EQ(repaired("2 j 1 0 m 1 1 l 0 0 l 1 0 l B " + back + "B "),
            "\n2 j\n1 0 m 1 1 l 0 1 l 0 0 l 1 0 l B\n");
  EXPECT_EQ(repaired("2 j " + open + "0 0 l B " + second + "B "), "\n2 j" + joined);
  EXPECT_EQ(repaired("2 j " + open + "0 0 l b " + back + "b "), "\n2 j" + joined);
  // Of a wide pen every such corner does, though what is filled ends nowhere.
  const std::string apart = "1 0 m 1 1 l 0 0 l 1 0 l B 0 1 m 0 0 l 1 1 l 0 1 l B        ";
  EXPECT_EQ(repaired("2 j 1 w " + apart), "\n2 j\n1 0 m 1 1 l 0 1 l 0 0 l 1 0 l B\n");
  EXPECT_EQ(repaired("2 j 1.1 w " + apart),
            "\n1.1 w\n2 j\n0 0 1 1 re f\n1 0 m 1 1 l 0 1 l 0 1 m 0 0 l 1 0 l S\n");
  EXPECT_EQ(repaired("1 j 1 J " + open + "0 0 l B " + back + "B "), "\n1 J\n1 j" + joined);
  // A stroke in another colour, or of another path, stays between what it covers and is covered by.
  const std::string fill = "0 0 m 1 0 l 1 1 l f\n";
  const auto between = [&](const std::string& stroke) {
    return repaired("1 j " + first + "f " + stroke + first + "f ");
  };
  EXPECT_EQ(between("1 G " + first + "S "), "\n" + fill + "1 G\n1 j\n" + first + "S\n" + fill);
  EXPECT_EQ(between(second + "S "), "\n" + fill + "1 j\n" + second + "S\n" + fill);
  EXPECT_EQ(between("[2] 0 d " + second + "s "),
            "\n" + fill + "1 j\n[2] 0 d\n" + second + "s\n" + fill);
}

TEST(content, leaves_what_it_does_not_understand) {
  for (const char* odd : {"1e5 w",
                          "--5 w",
                          "1.2.3 w",
                          "5- w",
                          "1 w 2",
                          "1 0 rg",
                          "(a) w",
                          "/N w",
                          "1 m",
                          "1 1 l",
                          "h",
                          "0 0 m",
                          "0 0 m 1 w S",
                          "Q",
                          "q",
                          "BT",
                          "ET",
                          "BT BT ET ET",
                          "BT q Q ET",
                          "W n",
                          "BT 0 0 m S ET",
                          "[1 2",
                          "(a",
                          "<< /A",
                          ") Tj",
                          "1 % c\n w",
                          "BI /W 1 ID x",
                          "\x80 w",
                          "0 0 m 1 1 2 2 l f",
                          "[a] 0 d",
                          "1 0 0 rg 1 1 sc",
                          "0 0 m BT ET f"}) {
    EXPECT_EQ(repaired(two + odd), two + odd);
  }
  // In these the squares are joined, each on its side.
  const std::string square = "\n0 0 1 1 re f\n";
  for (const char* barrier :
       {"BT (a\\)b) Tj ET", "% f\n", "/P BMC", "/P << /M [1 (>>)] >> BDC", "2 0 0 2 0 0 cm",
        "/X Do", "/Sh sh", "0 0 1 1 re W n", "0 0 1 1 re S", "/Pattern CS", "/No CS", "foo",
        "/Perceptual ri", "5 i", "0 0 9999999999999999 1 re f", "0 0 m % c\n1 0 l 1 1 l f",
        "BI /W 1 /H 1 /BPC 8 /CS /G ID \xff EI"}) {
    EXPECT_EQ(repaired(two + barrier + " 0 g " + two), square + barrier + square);
  }
  // Strokes would be as pale as before. The same again changes nothing.
  const std::string pale = "/Pale gs " + two;
  EXPECT_EQ(repaired(pale + "/Paler gs " + two + "BT ET"),
            "/Pale gs" + square + "/Paler gs" + square + "BT ET");
  EXPECT_EQ(repaired(pale + pale + "BT ET"), "/Pale gs" + square + "BT ET");
  // What a matrix makes a line, viewers show like one.
  const std::string flat = "1 1 1 1 0 0 cm " + two;
  EXPECT_EQ(repaired(flat), flat);
  for (const char* state : {"/Half gs", "/Unknown gs", "/Pattern cs /P scn"}) {
    EXPECT_EQ(repaired("q " + std::string(state) + ' ' + two + "Q " + two),
              "q " + std::string(state) + ' ' + two + "Q" + square);
  }
}

TEST(content, moves_no_corner_by_more_than_the_precision) {
  const std::string fine = "0 0 m 1.234567 0 l 1.234567 1 l f 0 0 m 1.234567 1 l 0 1 l f ";
  EXPECT_EQ(repaired(fine), "\n0 0 1.2346 1 re f\n");
  EXPECT_EQ(repaired("100 0 0 100 0 0 cm " + fine), "100 0 0 100 0 0 cm\n0 0 1.234567 1 re f\n");
  EXPECT_EQ(repaired("q .01 0 0 .01 0 0 cm " + fine + "Q"),
            "q .01 0 0 .01 0 0 cm\n0 0 1.23 1 re f\nQ");
  // More than nine decimals are not kept, and not rounded where that could be too much.
  content_settings finest;
  finest.precision = 1e-8;
  const std::string nine = "0 0 m 1.123456789 0 l 1.123456789 1 l f 0 0 m 1.123456789 1 l 0 1 l f ";
  const std::string ten = std::string(nine).insert(nine.find(" 1 l 0 1"), "1");
  EXPECT_EQ(repaired(nine + ten, finest), "\n0 0 1.123456789 1 re f\n");
  const std::string large = "72 0 0 72 0 0 cm ";
  EXPECT_EQ(repaired(large + nine, finest), "72 0 0 72 0 0 cm\n0 0 1.123456789 1 re f\n");
  EXPECT_EQ(repaired(large + ten, finest), large + ten);
  // What has an area, however small, keeps it.
  const std::string tiny = "0 0 m .00001 0 l .00001 .00001 l f ";
  EXPECT_NE(repaired(tiny + two).find("0 0 m .00001 0 l .00001 .00001 l f"), std::string::npos);
}

TEST(content, closes_by_a_pen_of_the_colour) {
  content_settings settings;
  settings.close = closing::stroke;
  EXPECT_EQ(repaired("q 2 0 0 2 0 0 cm 1 0 0 rg " + two + "BT ET Q", settings),
            "q 2 0 0 2 0 0 cm\n1 0 0 rg\n1 0 0 RG\n.15 w\n1 j\n0 0 1 1 re B\n"
            "0 G\n1 w\n0 j\nBT ET Q");
  // What was set before a form is drawn is not known, and kept all the same.
  EXPECT_EQ(repaired(two, settings, false), two);
  EXPECT_EQ(repaired("1 g " + two, settings, false),
            "\nq\n1 g\n1 G\n.3 w\n1 j\n[] 0 d\n0 0 1 1 re B\nQ\n1 g\n");
}

TEST(content, tells_what_is_drawn_and_under_what) {
  const content_surroundings surroundings{resources};
  const auto uses = xobjects_used(
      "/A#42 Do q 3 0 0 2 9 9 cm 0 1 -1 0 0 0 cm /Half gs /C Do Q /C Do", surroundings);
  ASSERT_TRUE(uses && uses->size() == 3);
  EXPECT_EQ((*uses)[0].name, "/AB");
  EXPECT_DOUBLE_EQ((*uses)[1].scale, 3);
  EXPECT_FALSE((*uses)[1].opaque);
  EXPECT_TRUE((*uses)[2].opaque && (*uses)[2].name == "/C" && (*uses)[2].scale == 1);
  EXPECT_FALSE(xobjects_used("/C Do Q", surroundings));
}

}  // namespace
}  // namespace trellion::pdf
