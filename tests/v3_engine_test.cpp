#include "v3_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "engine_runs.h"
#include "support.h"

namespace trellion::testing {
namespace {

/// Groups that are hard on the engine, small enough for the plain one.
class hard_groups {
 public:
  explicit hard_groups(unsigned seed) : random_(seed) {}

  /// Polygons on a few grid points: duplicates, spikes, crossings, everything shared.
  std::vector<polygon> soup() {
    std::vector<polygon> group(between(2, 30));
    const int width = between(2, 6);
    for (polygon& p : group) {
      p.resize(static_cast<std::size_t>(between(3, 8)));
      for (vertex& v : p) v = {between(0, width), between(0, width)};
    }
    return group;
  }

  /// A mesh with T-junctions, some of its polygons twice or more.
  std::vector<polygon> mesh() {
    std::vector<polygon> group =
        random_mesh(static_cast<unsigned>(random_()), between(2, 9), between(2, 9));
    for (int i = between(0, 3); i > 0; --i) group.push_back(group[random_() % group.size()]);
    return group;
  }

  /// Combs whose notches are filled and whose teeth carry bumps, back to back.
  std::vector<polygon> combs() {
    std::vector<polygon> group;
    for (const int side : {1, -1}) {
      const int teeth = between(3, 40);
      polygon outline = {{2 * teeth, 0}, {0, 0}};
      for (int i = 0; i <= 2 * teeth; ++i) {
        outline.push_back({i, side * (10 + i % 2 * 5)});
        if (i < 2) continue;
        const vertex tip = {i - 1, side * (10 + (i - 1) % 2 * 5)};
        const vertex left = {i - 2, side * (10 + i % 2 * 5)};
        const vertex right = {i, left[1]};
        if (between(0, 2) > 0) group.push_back({left, tip, right});
        if (between(0, 2) == 0) group.push_back({tip, right, {i, side * (20 + i % 7)}});
      }
      group.push_back(outline);
    }
    return group;
  }

  /// Polygons that all share one edge, and some that share others with them.
  std::vector<polygon> book() {
    std::vector<polygon> group;
    for (int i = between(3, 40); i > 0; --i) {
      group.push_back({{0, 0}, {10, 0}, {between(0, 20), i}});
      if (between(0, 1) == 0) group.back().push_back({between(-9, -1), between(1, 9)});
    }
    return group;
  }

  /// Outlines that run along the same few edges again and again, with polygons on those and others.
  std::vector<polygon> fans() {
    const int places = between(1, 3);
    const auto end_of = [](int place, int which) { return vertex{10 * place + 5 * which, 0}; };
    std::vector<polygon> group(static_cast<std::size_t>(between(1, 3)));
    for (polygon& outline : group) {
      const int side = between(0, 1) == 0 ? 1 : -1;
      for (int i = between(2, 12); i > 0; --i) {
        const int place = between(1, places);
        const int first = between(0, 5) == 0 ? 1 : 0;
        outline.push_back(end_of(place, first));
        outline.push_back(end_of(place, 1 - first));
        outline.push_back({between(0, 40), side * between(1, 20)});
      }
    }
    const std::size_t n_outlines = group.size();
    for (int i = between(0, 12); i > 0; --i) {
      const int place = between(1, places);
      group.push_back({end_of(place, 0), end_of(place, 1), {between(0, 40), between(-9, 9)}});
      if (between(0, 2) == 0) group.back().push_back({between(-9, -1), between(1, 9)});
    }
    for (int i = between(0, 12); i > 0; --i) {
      const polygon& outline = group[random_() % n_outlines];
      const std::size_t at = random_() % outline.size();
      group.push_back({outline[at], outline[(at + 1) % outline.size()]});
      for (int n = between(1, 3); n > 0; --n) {
        group.back().push_back({between(0, 40), between(-30, 30)});
      }
    }
    return group;
  }

  /// Houses on a zigzag outline that may run along their floors more than once. Some have a ragged
  /// roof that is filled, so that they end with fewer points than they began with.
  std::vector<polygon> houses() {
    constexpr int width = 30;
    std::vector<polygon> group;
    const int n = between(2, 6);
    const int most_cellars = between(0, 2);
    polygon ground = {{width * n, -9}, {0, -9}};
    for (int i = 0; i < n; ++i) {
      const vertex left = {width * i, i % 2};
      const vertex right = {width * (i + 1), (i + 1) % 2};
      ground.push_back(left);
      for (int cellars = between(0, most_cellars); cellars > 0; --cellars) {
        ground.insert(ground.end(), {right, {width * i + between(1, 9), -cellars}, left});
      }
      for (int houses = between(1, 2); houses > 0; --houses) {
        polygon roof;
        for (int x = between(0, width - 2); x > 0; --x) {
          roof.push_back({width * i + x, 10 * houses + between(0, 5)});
        }
        if (roof.size() >= 3 && between(0, 3) > 0) group.push_back(roof);
        polygon house = {left, right, {right[0] - 1, 8}};
        house.insert(house.end(), roof.begin(), roof.end());
        group.push_back(house);
      }
    }
    ground.push_back({width * n, n % 2});
    group.push_back(ground);
    return group;
  }

  /// In random order, each from a random vertex on, some of them backwards.
  std::string shuffled(std::vector<polygon> group) {
    std::ranges::shuffle(group, random_);
    const bool one_sense = between(0, 1) == 0;
    for (polygon& p : group) {
      std::ranges::rotate(p, p.begin() + between(0, static_cast<int>(p.size()) - 1));
      if (!one_sense && between(0, 1) == 0) std::ranges::reverse(p);
    }
    return to_postscript(group);
  }

  int between(int low, int high) {
    return low + static_cast<int>(random_() % static_cast<unsigned>(high - low + 1));
  }

 private:
  std::mt19937 random_;
};

TEST(engine, agrees_with_the_plain_one) {
  for (unsigned seed = 0; seed < 3000; ++seed) {
    hard_groups groups(seed);
    const std::vector<polygon> group = seed % 6 == 0   ? groups.soup()
                                       : seed % 6 == 1 ? groups.mesh()
                                       : seed % 6 == 2 ? groups.combs()
                                       : seed % 6 == 3 ? groups.book()
                                       : seed % 6 == 4 ? groups.fans()
                                                       : groups.houses();
    const std::string text = groups.shuffled(group);
    const int limit = groups.between(0, 1) == 0 ? 0 : groups.between(3, 8);
    const engine_result expected = plainly_merged(text, limit);
    // Small sizes put the structures for large paths and crowds to work on small groups.
    for (const engine_sizes sizes :
         {engine_sizes{}, {3, 64, 0, 0}, {64, 2, 1}, {4, 3, 3, 0}, {3, 1, 0, 1}, {6, 1, 64, 2}}) {
      ASSERT_EQ(merged(text, limit, sizes), expected) << "seed " << seed << ":\n" << text;
    }
  }
}

}  // namespace
}  // namespace trellion::testing
