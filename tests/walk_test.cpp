#include "walk.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "support.h"

namespace trellion::testing {
namespace {

/// Runs of polygons that end and begin anew at odd ones, and what stands between them.
std::string random_runs(std::mt19937& random) {
  const auto number = [&] {
    static const std::vector<std::string> gaps = {"\n",    "\r", "\r\n",
                                                  " \n\n", ". ", std::string(130, ' ')};
    const bool usual = random() % 16 > 0;
    return std::to_string(random() % 100) + (usual ? " " : gaps[random() % gaps.size()]);
  };
  const auto polygon = [&](std::size_t n_vertices, const std::string& lineto) {
    std::string text = number() + number() + "m ";
    for (std::size_t i = 1; i < n_vertices; ++i) text += number() + number() + lineto;
    return text + "h ";
  };
  std::string text;
  for (std::size_t n = random() % 12; n > 0; --n) {
    const std::size_t n_alike = random() % 8;
    const std::string lineto = random() % 3 == 0 ? "L " : "l ";
    const std::string ending = random() % 2 == 0 ? "f\n" : "";
    for (std::size_t i = 0; i < n_alike; ++i) {
      text += polygon(random() % 20 == 0 ? 1 : 2 + random() % 4, lineto) + ending;
    }
    constexpr std::array odd = {"7 ", "7 8 ", "{ ", "g\n\n", "- ", "99999999 ", "1 2 m h ", ""};
    text += odd[random() % odd.size()];
  }
  return text;
}

TEST(walk, goes_the_same_way_whatever_the_scan_has_kept) {
  std::mt19937 random(5);
  int n_kept = 0;
  for (int round = 0; round < 3000; ++round) {
    // Numbers before the first polygon are none of its own.
    const std::string text = (random() % 4 == 0 ? "7 8 9 " : "x ") + random_runs(random);
    const token_list list(text);
    captured_text ignored;
    kept_polygons kept;
    try {
      const drawing_token_set operators = drawing_token_scan(list, 1, false, ignored, &kept);
      if (kept.n_polygons > 0) ++n_kept;
      ASSERT_EQ(walk_in_words(list, operators, &kept), walk_in_words(list, operators)) << text;
      ASSERT_EQ(kept.n_polygons, 0) << "what is kept stays in memory: " << text;
    } catch (const early_end&) {
      continue;  // no two polygons alike
    }
  }
#ifdef __SSE2__  // without marks nothing is kept
  EXPECT_GT(n_kept, 1000);
#endif
}

}  // namespace
}  // namespace trellion::testing
