// The families that somebody could make to keep a program that joins polygons busy for long: texts
// and edges that collide in hash tables whose hashes are known, and very much in one place.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "families.h"
#include "meshes.h"

namespace bench {
namespace {

/// An edge as the coordinates of its ends: x and y of the first, x and y of the second.
using edge = std::array<int, 4>;

/// Hashing an edge as first * 0x9e3779b97f4a7c15 + second * 0xc2b2ae3d27d4eb4f, two well known odd
/// numbers, where a point is x * 2^32 + y in tenths of our unit, any sum of these leaves the hash
/// as it is. They are the short vectors of a lattice, found by reducing a basis of it.
constexpr std::array<edge, 4> steps_of_one_hash{{{1998, 0, -9274, 0},
                                                 {-8860, -3996, -3505, 18548},
                                                 {176187, -19980, 33870, 92740},
                                                 {-11231, -218489, -4996, -60669}}};

/// Edges from left to right that all have one hash.
class colliding_edges {
 public:
  explicit colliding_edges(std::size_t count) {
    // More of the short steps, so that the picture is not much wider than high.
    const auto side = static_cast<int>(std::ceil(std::pow(static_cast<double>(count) / 100, 0.25)));
    counts_ = {10 * side, 10 * side, side, side};
    edge largest{};
    for (std::size_t k = 0; k < counts_.size(); ++k) {
      for (std::size_t c = 0; c < first_.size(); ++c) {
        const int reach = steps_of_one_hash[k][c] * (counts_[k] - 1);
        first_[c] -= std::min(0, reach);
        largest[c] += std::abs(reach);
      }
    }
    for (int& c : first_) c += margin;
    first_[2] += largest[0] + margin;
    top_right_ = {largest[0] + largest[2] + 3 * margin,
                  std::max(largest[1], largest[3]) + 2 * margin};
  }

  [[nodiscard]] edge at(std::size_t index) const {
    edge e = first_;
    for (std::size_t k = 0; k < counts_.size(); ++k) {
      const auto n = static_cast<std::size_t>(counts_[k]);
      const auto steps = static_cast<int>(index % n);
      for (std::size_t c = 0; c < e.size(); ++c) e[c] += steps * steps_of_one_hash[k][c];
      index /= n;
    }
    return e;
  }
  [[nodiscard]] point top_right() const { return top_right_; }

 private:
  std::array<int, 4> counts_{};
  edge first_{};
  point top_right_;
};

/// Names of sixteen characters. Whatever text follows them, the hash of the whole is one and the
/// same if it is that of std::string in the library of g++: it takes eight characters at a time,
/// and the second eight take back what the first have changed.
class colliding_names {
 public:
  colliding_names(std::size_t length_of_whole, std::uint64_t seed)
      : start_(hash_seed ^ (length_of_whole * multiplier)), goal_(random_source(seed).next()) {}

  std::string next() {
    for (;;) {
      std::string name = letters(drawn_++);
      const std::uint64_t state = (start_ ^ mixed(word_of(name))) * multiplier;
      const std::uint64_t second = unmixed(state ^ goal_);
      name.append(word_size, ' ');
      std::memcpy(name.data() + word_size, &second, word_size);
      if (std::ranges::all_of(name, may_stand_in_name)) return name;
    }
  }

 private:
  static constexpr std::size_t word_size = 8;
  static constexpr std::uint64_t hash_seed = 0xc70f6907U;
  static constexpr std::uint64_t multiplier = 0xc6a4a7935bd1e995U;
  static constexpr int shift = 47;

  /// Newton's iteration: every step doubles the bits that are right, three at first.
  static constexpr std::uint64_t inverse = [] {
    std::uint64_t x = multiplier;
    for (int bits = 3; bits < 64; bits *= 2) x *= 2 - multiplier * x;
    return x;
  }();

  static std::uint64_t mixed(std::uint64_t word) {
    word *= multiplier;
    return (word ^ word >> shift) * multiplier;
  }
  static std::uint64_t unmixed(std::uint64_t word) {
    word *= inverse;
    return (word ^ word >> shift) * inverse;
  }
  static std::uint64_t word_of(const std::string& text) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data(), word_size);
    return word;
  }
  /// A number in letters.
  static std::string letters(std::size_t number) {
    std::string text(word_size, 'a');
    for (char& c : text) {
      c = static_cast<char>('a' + number % 26);
      number /= 26;
    }
    return text;
  }
  static bool may_stand_in_name(char c) {
    constexpr std::string_view special = "()<>[]{}/%\x7f";
    return static_cast<unsigned char>(c) > ' ' && special.find(c) == std::string_view::npos;
  }

  std::uint64_t start_;
  std::uint64_t goal_;
  std::size_t drawn_ = 0;
};

/// Point i of `count` on a square around a place, going round, every other one nearer to the place
/// so that no three lie on a straight line.
point on_rim(point centre, int half_side, std::size_t i, std::size_t count) {
  const auto half = static_cast<std::size_t>(half_side);
  const std::size_t way = 8 * half * i / count;
  const int along = static_cast<int>(way % (2 * half)) - half_side;
  const auto placed = [&](int x, int y) {
    const int nearer = i % 2 == 0 ? 0 : 1;
    return point{centre.x + x - nearer * x / 16, centre.y + y - nearer * y / 16};
  };
  switch (way / (2 * half)) {
    case 0: return placed(along, -half_side);
    case 1: return placed(half_side, along);
    case 2: return placed(-along, half_side);
    default: return placed(-half_side, -along);
  }
}

}  // namespace

/// The third points lie anywhere, so that hardly any other edge is shared.
void write_collide(eps_writer& out, const request& what) {
  const colliding_edges edges(what.polygons);
  const point end = edges.top_right();
  random_source random(what.seed);
  out.begin(what.title, end);
  out.colour(only_level);
  for (std::size_t i = 0; i < what.polygons; ++i) {
    const edge e = edges.at(i);
    const int x = random.between(margin, end.x - margin);
    out.polygon(
        triangle{{{e[0], e[1]}, {e[2], e[3]}, {x, random.between(margin, end.y - margin)}}});
  }
  out.end();
}

/// The halves of a cell are a run of polygons with a moveto of their own.
void write_words(eps_writer& out, const request& what) {
  const triangle_mesh mesh(what.polygons, what.seed);
  const operator_names& known = out.names();
  // A name and the operators behind it, with a blank after each.
  colliding_names names(16 + known.lineto.size() + known.closepath.size() + known.fill.size() + 4,
                        what.seed);
  out.begin(what.title, mesh.grid().top_right());
  out.colour(only_level);
  for (std::size_t i = 0; i + 1 < mesh.size(); i += 2) {
    const std::string name = names.next();
    out.put('/').put(name).put(" {moveto} bind def\n");
    out.polygon(mesh.polygon(i), name);
    out.polygon(mesh.polygon(i + 1), name);
  }
  out.end();
}

/// Two of them cancel out, and then there is no polygon to be written: the repair ends early.
void write_stack(eps_writer& out, const request& what) {
  constexpr int end = margin + extent;
  constexpr triangle same{{{margin, margin}, {end, margin}, {margin, end}}};
  out.begin(what.title, {end + margin, end + margin});
  out.colour(only_level);
  for (std::size_t i = 0; i < what.polygons; ++i) out.polygon(same);
  out.end();
}

/// They share the edges at the lower left; their fourth points stand on the way to the upper right.
void write_kites(eps_writer& out, const request& what) {
  const auto count = static_cast<int>(what.polygons);
  const int step = std::max(1, extent / (2 * count));
  const int middle = margin + extent / 2;
  const int end = middle + (count + 1) * step;
  random_source random(what.seed);
  std::vector<quad> kites;
  for (int i = 1; i <= count; ++i) {
    const int fourth = middle + i * step;
    kites.push_back({{{middle, margin}, {margin, margin}, {margin, middle}, {fourth, fourth}}});
  }
  shuffle(kites, random);
  out.begin(what.title, {end + margin, end + margin});
  out.colour(only_level);
  for (const quad& kite : kites) out.polygon(kite);
  out.end();
}

/// Each rung has an edge of either outline; between two rungs there is a gap.
void write_ladder(eps_writer& out, const request& what) {
  constexpr int rise = extent / 20;
  const std::size_t rungs = what.polygons - 2;
  const int pitch = std::max(2, extent / static_cast<int>(2 * rungs));
  const int right = margin + static_cast<int>(2 * rungs) * pitch;
  const int top = margin + extent;
  random_source random(what.seed);

  std::vector<point> lower;
  std::vector<point> upper;
  for (std::size_t i = 0; i < 2 * rungs; ++i) {
    const int x = margin + static_cast<int>(i) * pitch;
    const int step = i % 2 == 0 ? 0 : rise;
    lower.push_back({x, margin + extent / 4 + step + random.between(0, rise - 1)});
    upper.push_back({x, top - extent / 4 - step - random.between(0, rise - 1)});
  }
  std::vector<quad> between;
  for (std::size_t i = 0; i < 2 * rungs; i += 2) {
    between.push_back({lower[i], lower[i + 1], upper[i + 1], upper[i]});
  }
  lower.insert(lower.end(), {{right, margin}, {margin, margin}});
  upper.insert(upper.end(), {{right, top}, {margin, top}});

  out.begin(what.title, {right + margin, top + margin});
  out.colour(only_level);
  out.polygon(lower);
  out.polygon(upper);
  for (const quad& rung : between) out.polygon(rung);
  out.end();
}

/// They go all the way round, in random order.
void write_fan(eps_writer& out, const request& what) {
  const int half_side = std::max(extent / 2, static_cast<int>(what.polygons / 8) + 1);
  const point hub{margin + half_side, margin + half_side};
  std::vector<std::size_t> order(what.polygons);
  std::iota(order.begin(), order.end(), std::size_t{0});
  random_source random(what.seed);
  shuffle(order, random);

  out.begin(what.title, {2 * hub.x, 2 * hub.y});
  out.colour(only_level);
  for (const std::size_t i : order) {
    const std::size_t next = (i + 1) % what.polygons;
    out.polygon(triangle{hub, on_rim(hub, half_side, i, what.polygons),
                         on_rim(hub, half_side, next, what.polygons)});
  }
  out.end();
}

}  // namespace bench
