#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "support.h"
#include "tokens.h"

namespace trellion::testing {
namespace {

/// A picture taken apart: the areas and points drawn with each colour, and everything else.
struct picture {
  std::vector<std::int64_t> areas;
  std::vector<std::set<std::string>> points;
  std::string rest;  // with its layout
};

picture taken_apart(const std::string& text) {
  picture result;
  std::vector<token> numbers;
  polygon open;
  captured_text rest;
  for (token_list list(text); !list.empty();) {
    const token t = list.take_head();
    if (t.is_number()) {
      numbers.push_back(t);
    } else if (t.text == "m" || t.text == "l") {
      const std::string x(numbers[0].text);
      const std::string y(numbers[1].text);
      open.push_back({std::stoi(x), std::stoi(y)});
      result.points.back().insert(x + ' ' + y);
      numbers.clear();
    } else if (t.text == "h") {
      result.areas.back() += doubled_area(open);
      open.clear();
    } else if (t.text != "f") {
      for (const token& number : numbers) write_token(number, rest);
      write_token(t, rest);
      numbers.clear();
      result.areas.push_back(0);
      result.points.emplace_back();
    }
  }
  result.rest = rest.text();
  return result;
}

TEST(repair, keeps_area_points_and_all_other_text_of_tiling_polygons) {
  const scratch_directory directory;
  for (unsigned seed = 1; seed <= 30; ++seed) {
    std::string text = "begin\n";
    for (unsigned level = 0; level < 3; ++level) {
      text += "0." + std::to_string(level) + " setgray\n";
      text += to_postscript(random_mesh(3 * seed + level, 4 + static_cast<int>(seed), 7));
    }
    text += "  1 2   3 (end)\n\n show {  }  %";
    directory.write("mesh.eps", text);
    const std::string options = seed % 3 == 0 ? " -m" + std::to_string(seed / 3 + 2) : "";
    ASSERT_EQ(shell("trellion mesh.eps" + options, directory).status, 0);

    const std::string repaired = directory.read("mesh_r.eps");
    const picture before = taken_apart(text);
    const picture after = taken_apart(repaired.substr(repaired.find("begin")));
    EXPECT_EQ(before.rest, after.rest);
    EXPECT_EQ(before.areas, after.areas);
    for (std::size_t i = 0; i < before.points.size(); ++i) {
      EXPECT_TRUE(std::ranges::includes(before.points[i], after.points.at(i))) << seed;
    }
    EXPECT_LT(repaired.size(), text.size());
  }
}

}  // namespace
}  // namespace trellion::testing
