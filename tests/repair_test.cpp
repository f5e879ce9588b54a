#include "repair.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <sstream>

#include "locality.h"
#include "postscript_path_queue.h"
#include "support.h"
#include "walk.h"

namespace trellion::testing {
namespace {

class text_source : public byte_source {
 public:
  explicit text_source(std::string_view text) : text_(text) {}

  std::size_t read(char* buffer, std::size_t capacity) override {
    const std::size_t count = text_.copy(buffer, capacity);
    text_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view text_;
};

struct repaired_text {
  std::string text;  ///< without the line about the program
  repair_summary summary;
};

repaired_text repaired(const std::string& text, const run_settings& settings = {}) {
  captured_text console;
  captured_text out;
  text_source source(text);
  const repair_summary summary = repair(settings, source, text.size(), console, out);
  const std::string all = out.text();
  return {all.substr(all.find('\n') + 1), summary};
}

const std::string square = "0 0 m 2 0 l 2 2 l 0 2 l h f\n";
const std::string right_neighbour = "2 0 m 4 0 l 4 2 l 2 2 l h f\n";
// On the same side of the line from (0 0) to (4 0).
const std::string fold = "0 0 m 4 0 l 1 3 l h f\n4 0 m 0 0 l 3 4 l h f\n";
const std::string line = "7 7 m 9 9 l h f\n";

TEST(repair, sums_up_what_it_has_done) {
  const repair_summary sum = repaired(square + right_neighbour + "x " + square + line).summary;
  EXPECT_EQ(sum.groups, 2);
  EXPECT_EQ(sum.polygons_read, 4);
  EXPECT_EQ(sum.without_area, 1);
  EXPECT_EQ(sum.mergers, 1);
  EXPECT_EQ(sum.polygons_left, 2);
  EXPECT_FALSE(sum.area_lost);

  const repair_summary of_fold = repaired(fold).summary;
  EXPECT_EQ(of_fold.mergers, 1);
  EXPECT_TRUE(of_fold.area_lost);
}

/// The console and the repaired text, every run of blanks made one.
std::string squeezed_outcome(const std::string& text, const run_settings& settings) {
  captured_text console;
  captured_text out;
  text_source source(text);
  try {
    repair(settings, source, text.size(), console, out);
  } catch (const early_end&) {
  }
  std::string all = console.text() + out.text();
  const auto both_blank = [](char a, char b) { return a == ' ' && b == ' '; };
  all.erase(std::unique(all.begin(), all.end(), both_blank), all.end());
  return all.erase(all.find("%%Processed"), std::string("%%Processed by").size() + 80);
}

/// Wide gaps in place of one blank out of `out_of`.
std::string widened(const std::string& text, unsigned out_of, std::mt19937& random) {
  std::string result;
  for (const char c : text) {
    result.append(c == ' ' && random() % out_of == 0 ? 130 : 1, c);
  }
  return result;
}

TEST(repair, comes_to_the_same_when_blanks_keep_tokens_apart) {
  const std::vector<std::string> odd = {"7 ",
                                        "7 8 9 ",
                                        "-2 1.2.3 ",
                                        "x\n",
                                        "{ ",
                                        "}\r\n",
                                        "\r",
                                        " \n",
                                        "0 0 m ",
                                        "1 1 l ",
                                        "h\n",
                                        "/pgf ",
                                        "4 4 m h f\n",
                                        "9 m 1 1 l h f\n",
                                        std::string(70, '0') + ' '};
  std::mt19937 random(11);
  for (int round = 0; round < 400; ++round) {
    std::string text;
    while (text.size() < 700) {
      while (random() % 2 == 0) text += odd[random() % odd.size()];
      for (unsigned n = random() % 4; n > 0; --n) {
        const std::string x = std::to_string(random() % 2000);
        const std::string y = std::to_string(random() % 90) + ".5";
        const char* const end = random() % 20 == 0 ? " 8 9 l h g\n" : " 8 9 l h f\n";
        text.append(x + " 1 m ").append(x + ' ' + y + " l").append(end);
      }
    }
    run_settings settings;
    settings.min_separators = 1 + round % 2;
    settings.remove_mesh = round % 4 < 2;
    settings.verbose = true;
    const std::string by_tokens = squeezed_outcome(widened(text, 1, random), settings);
    ASSERT_EQ(squeezed_outcome(text, settings), by_tokens) << text;
    ASSERT_EQ(squeezed_outcome(widened(text, 40, random), settings), by_tokens) << text;
  }
}

TEST(repair, names_the_first_fault_of_a_group_however_it_is_read) {
  const auto complaint = [](const std::string& text) {
    try {
      repaired(text);
    } catch (const coordinate_error& error) {
      return std::string(error.what());
    }
    return std::string("none");
  };
  const std::string squares = square + right_neighbour;
  const std::string triangle = "0 0 m 3 0 l 3 3 l h f\n";
  const std::vector<std::array<std::string, 2>> texts = {
      // What ends a run before its polygon is whole is no coordinate.
      {squares + "99999999 99999999 foo\n", "none"},
      {squares + "1 1 m . 99999999 l h g\n" + squares, "none"},
      // Nor is what belongs to no group: a fault is not kept for the next.
      {"1 -. m 1 2 l h f {}\n" + squares, "none"},
      {squares + "3 99999999 m 1 1 l h f\n", "'99999999' is too large for a coordinate in line 3"},
      {squares + "3 4 m 1\n-. l 99999999 0 l h f\n. 0 m 1 1 l h f\n",
       "'-.' is not a coordinate in line 4"},
      {squares + triangle + triangle + "-2147484 . m 1 1 l h f\n" + triangle,
       "'-2147484' is too large for a coordinate in line 5"},
      {squares + "x\n" + squares + "0 0 m . 0 l 1 1 l h f\n" + triangle + "99999999 0 bar\n",
       "'.' is not a coordinate in line 6"}};
  std::mt19937 random(3);
  for (const auto& [text, expected] : texts) {
    EXPECT_EQ(complaint(text), expected) << text;
    EXPECT_EQ(complaint(widened(text, 1, random)), expected) << text;
    for (int i = 0; i < 20; ++i) {
      EXPECT_EQ(complaint(widened(text, 12, random)), expected) << text;
    }
  }
}

TEST(repair, leaves_groups_alone_when_asked) {
  run_settings settings;
  settings.left_alone = {{2, 3}};
  const std::string group = square + right_neighbour + "x\n";
  const repaired_text result = repaired(group + group + group + group, settings);
  EXPECT_EQ(result.summary.groups, 4);
  EXPECT_EQ(result.summary.mergers, 2);
  EXPECT_NE(result.text.find(group + group), std::string::npos);
}

TEST(repair, ends_early_without_operators_or_when_polygons_cancel_out) {
  EXPECT_THROW(repaired("1 2 x"), early_end);
  EXPECT_THROW(repaired(square + square), early_end);
}

run_settings careful() {
  run_settings settings;
  settings.careful = true;
  return settings;
}

TEST(careful_repair, joins_neighbours_like_any_other) {
  std::string meshes;
  for (const unsigned seed : {1U, 2U, 3U}) {
    meshes += std::to_string(seed) + " x\n" + to_postscript(random_mesh(seed, 12, 9));
  }
  const repaired_text result = repaired(meshes, careful());
  EXPECT_EQ(result.text, repaired(meshes).text);
  EXPECT_EQ(result.summary.groups, 3);
  EXPECT_FALSE(result.summary.area_lost);
}

TEST(careful_repair, joins_no_polygons_on_the_same_side_of_an_edge) {
  const repaired_text of_fold = repaired(fold, careful());
  EXPECT_EQ(of_fold.text, " 4 0 m\n1 3 l 0 0 l \nh f\n0 0 m\n3 4 l 4 0 l \nh f\n");
  EXPECT_FALSE(of_fold.summary.area_lost);

  // With a fold elsewhere, which takes layers. The second overlaps the first no longer than the
  // third begins, which overlaps it as well.
  const std::string three =
      "0 0 m 10 0 l 10 9 l 6 9 l 5 3 l 0 9 l h f\n1 0 m 2 0 l 2 1 l h f\n"
      "5 0 m 6 0 l 5 3 l 6 9 l 4 9 l h f\n"
      "0 -99 m 4 -99 l 1 -96 l h f\n4 -99 m 0 -99 l 3 -95 l h f\n";
  EXPECT_EQ(repaired(three, careful()).summary.mergers, 0);

  // The two squares make an edge that the polygon on the same side of it has too, and only then.
  const std::string above = "0 0 m 4 0 l 4 9 l 0 8 l h f\n";
  EXPECT_TRUE(repaired(square + right_neighbour + above).summary.area_lost);
  const repair_summary sum = repaired(square + right_neighbour + above, careful()).summary;
  EXPECT_FALSE(sum.area_lost);
  EXPECT_EQ(sum.mergers, 1);
  EXPECT_EQ(sum.polygons_left, 2);
}

TEST(careful_repair, keeps_what_has_no_area) {
  const std::string dot = "5 5 m 5 5 l 5 5 l h f\n";
  const std::string bow_tie = "0 0 m 2 2 l 2 0 l 0 2 l h f\n";
  const repaired_text result = repaired(square + line + dot + bow_tie + right_neighbour, careful());
  EXPECT_EQ(result.text,
            " 7 7 m\n9 9 l \nh f\n5 5 m\n5 5 l 5 5 l \nh f\n"
            "0 0 m\n2 2 l 2 0 l 0 2 l \nh f\n" +
                repaired(square + right_neighbour).text.substr(1));
  EXPECT_EQ(result.summary.without_area, 3);
  EXPECT_EQ(result.summary.polygons_left, 4);
}

TEST(careful_repair, keeps_the_order_of_what_has_no_area_when_points_are_laid_by_place) {
  std::vector<polygon> polygons = random_mesh(1, 200, 170);
  for (int i = 0; i < 100; ++i) polygons.push_back({{10 * i, 7 * i}, {i, 1700 - i}});
  std::ranges::shuffle(polygons, std::mt19937(8));
  std::string lines;
  for (const polygon& p : polygons) {
    if (p.size() > 2) continue;
    const auto at = [&](std::size_t i) {
      return std::to_string(p[i][0]) + ' ' + std::to_string(p[i][1]);
    };
    lines.append(at(0)).append(" m\n").append(at(1)).append(" l \nh f\n");
  }
  const std::string text = to_postscript(polygons);
  captured_text ignored;
  walk(token_list(text), mlhf(), ignored, [](const polygon_group& group) {
    ASSERT_TRUE(are_scattered(group.vertices, group.n_vertices));
  });
  EXPECT_TRUE(repaired(text, careful()).text == ' ' + lines + repaired(text).text.substr(1));
}

/// The polygons of a text drawn with the operators of mlhf().
std::vector<polygon> polygons_of(const std::string& text) {
  std::vector<polygon> polygons(1);
  std::istringstream words(text);
  for (std::string x, y, op; words >> x;) {
    if (x == "h") polygons.emplace_back();
    if (x == "h" || x == "f") continue;
    words >> y >> op;
    polygons.back().push_back({std::stoi(x), std::stoi(y)});
  }
  polygons.pop_back();
  return polygons;
}

/// How many times the polygons, each turned counter-clockwise, wind round a point beside their
/// edges, all together.
int windings(const std::vector<polygon>& polygons, const vertex& point) {
  int sum = 0;
  for (const polygon& p : polygons) {
    const int sense = doubled_area(p) < 0 ? -1 : 1;
    for (std::size_t i = 0; i < p.size(); ++i) {
      const vertex& a = p[i];
      const vertex& b = p[(i + 1) % p.size()];
      const bool up = a[1] < point[1];
      if (up != (b[1] > point[1])) continue;
      if ((doubled_area({a, b, point}) > 0) == up) sum += up ? sense : -sense;
    }
  }
  return sum;
}

TEST(careful_repair, keeps_every_winding_of_polygons_that_lie_anyhow) {
  std::mt19937 random(7);
  const auto lattice = [&random] { return static_cast<int>(random() % 5) * 1000; };
  std::int64_t mergers = 0;
  for (int round = 0; round < 200; ++round) {
    std::vector<polygon> polygons(2 + random() % 60);
    for (polygon& p : polygons) {
      while (doubled_area(p) == 0) {
        p.resize(3 + random() % 4);
        for (vertex& v : p) v = {lattice(), lattice()};
      }
    }
    const repaired_text result = repaired(to_postscript(polygons), careful());
    EXPECT_FALSE(result.summary.area_lost);
    mergers += result.summary.mergers;
    const std::vector<polygon> left = polygons_of(result.text);
    EXPECT_EQ(left.size(), polygons.size() - static_cast<std::size_t>(result.summary.mergers));
    for (int x = 0; x < 4000; x += 1000) {
      for (int y = 0; y < 4000; y += 1000) {
        for (const vertex& beside : {vertex{x + 379, y + 127}, vertex{x + 619, y + 883}}) {
          ASSERT_EQ(windings(left, beside), windings(polygons, beside)) << result.text;
        }
      }
    }
  }
  EXPECT_GT(mergers, 200);
}

}  // namespace
}  // namespace trellion::testing
