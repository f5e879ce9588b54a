// The families that are mostly something else than polygons: a small mesh in parts, and after each
// part as much of the rest as makes the file as large as a contour plot.

#include <algorithm>
#include <array>

#include "families.h"
#include "meshes.h"

namespace bench {
namespace {

constexpr std::size_t most_mesh_polygons = 4000;
constexpr std::size_t fewest_mesh_polygons = 40;

std::size_t contour_size(const request& what, const operator_names& names) {
  eps_writer counter(nullptr, names);
  write_contour(counter, what);
  return counter.bytes_written();
}

void write_mesh_part(eps_writer& out, const quad_mesh& mesh, std::size_t part, std::size_t parts) {
  out.colour(static_cast<int>(part % level_count));
  const std::size_t end = mesh.size() * (part + 1) / parts;
  for (std::size_t i = mesh.size() * part / parts; i < end; ++i) out.polygon(mesh.polygon(i));
}

/// `fill(goal)` writes until the file has about `goal` bytes.
template <class Fill>
void write_with_mesh(eps_writer& out, const request& what, std::size_t size, std::size_t parts,
                     Fill fill) {
  const quad_mesh mesh(std::clamp(what.polygons / 10, fewest_mesh_polygons, most_mesh_polygons));
  out.begin(what.title, mesh.grid().top_right());
  for (std::size_t part = 0; part < parts; ++part) {
    write_mesh_part(out, mesh, part, parts);
    fill(size * (part + 1) / parts);
  }
  out.end();
}

/// Numbers that a loop before them takes from the file, so that they need no room on the stack.
void write_numbers_stretch(eps_writer& out, random_source& random, std::size_t count) {
  constexpr std::size_t numbers_per_line = 12;
  constexpr int largest = 99'999;
  out.count(count).put(" {currentfile token {pop} if} repeat\n");
  for (std::size_t i = 1; i <= count; ++i) {
    out.number(random.between(-largest, largest));
    out.put(i % numbers_per_line == 0 || i == count ? '\n' : ' ');
  }
}

/// Statements of the kinds that stand beside the polygons of figures. None of them draws anything
/// that looks like a run of polygons.
class statement_writer {
 public:
  statement_writer(eps_writer& out, std::uint64_t seed) : out_(out), random_(seed) {}

  void write_one() {
    switch (random_.below(5)) {
      case 0: return comment();
      case 1: return string();
      case 2: return procedure();
      case 3: return line();
      default: return tick();
    }
  }

 private:
  std::string_view word() {
    static constexpr std::array<std::string_view, 24> words = {
        "axis",   "label", "of",   "the",   "surface",  "height", "contour",  "legend",
        "figure", "scale", "from", "left",  "to",       "right",  "measured", "mean",
        "value",  "with",  "in",   "metre", "gradient", "and",    "shade",    "line"};
    return words[random_.below(words.size())];
  }
  void words() {
    const std::size_t count = 4 + random_.below(8);
    for (std::size_t i = 0; i < count; ++i) out_.put(i == 0 ? "" : " ").put(word());
  }
  void comment() {
    out_.put("% ");
    words();
    out_.put('\n');
  }
  void string() {
    out_.put('(');
    words();
    out_.put(" \\(").count(random_.below(100)).put("\\)) pop\n");
  }
  void procedure() {
    out_.put('/').put(word()).count(random_.below(100)).put(" { gsave ");
    out_.number(random_.between(0, 100)).put(" setgray newpath ");
    place(out_.names().moveto);
    out_.put("dup stringwidth pop neg 0 rmoveto show grestore } bind def\n");
  }
  // With "newpath" before each, neighbouring lines would look like polygons.
  void line() {
    place(out_.names().moveto);
    const std::size_t count = 1 + random_.below(3);
    for (std::size_t i = 0; i < count; ++i) place(out_.names().lineto);
    out_.put("stroke\n");
  }
  void tick() {
    out_.put("gsave 0.3 setlinewidth newpath ");
    place(out_.names().moveto);
    out_.put("0 -4 rlineto stroke grestore\n");
  }
  void place(std::string_view name) {
    out_.number(random_.between(margin, extent)).put(' ');
    out_.number(random_.between(margin, extent)).put(' ').put(name).put(' ');
  }

  eps_writer& out_;
  random_source random_;
};

}  // namespace

void write_numbers(eps_writer& out, const request& what) {
  constexpr std::size_t stretch_bytes = 2'500'000;  // some 300,000 numbers
  const std::size_t size = contour_size(what, out.names());
  const std::size_t parts = std::max<std::size_t>(2, size / stretch_bytes);
  random_source random(what.seed);
  write_with_mesh(out, what, size, parts, [&out, &random](std::size_t goal) {
    constexpr std::size_t bytes_of_100_numbers = 739;
    const std::size_t written = std::min(goal, out.bytes_written());
    write_numbers_stretch(out, random, (goal - written) * 100 / bytes_of_100_numbers);
  });
}

void write_text(eps_writer& out, const request& what) {
  constexpr std::size_t parts = 8;
  statement_writer statements(out, what.seed);
  write_with_mesh(out, what, contour_size(what, out.names()), parts,
                  [&out, &statements](std::size_t goal) {
                    while (out.bytes_written() < goal) statements.write_one();
                  });
}

}  // namespace bench
