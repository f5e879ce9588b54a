// The families whose polygons form a grid.

#include <algorithm>
#include <numeric>
#include <vector>

#include "families.h"
#include "meshes.h"

namespace bench {
namespace {

template <class Mesh>
void write_by_level(eps_writer& out, const request& what, const Mesh& mesh) {
  const std::vector<std::uint8_t> levels = field_levels(mesh, what.seed);
  out.begin(what.title, mesh.grid().top_right());
  for (int level = 0; level < level_count; ++level) {
    out.colour(level);
    for (std::size_t i = 0; i < mesh.size(); ++i) {
      if (levels[i] == level) out.polygon(mesh.polygon(i));
    }
  }
  out.end();
}

/// The quads in one colour and in row order, each passed through `change` before it is written.
template <class Change>
void write_changed(eps_writer& out, const request& what, Change change) {
  const quad_mesh mesh(what.polygons);
  out.begin(what.title, mesh.grid().top_right());
  out.colour(only_level);
  for (std::size_t i = 0; i < mesh.size(); ++i) {
    quad vertices = mesh.polygon(i);
    change(vertices, mesh);
    out.polygon(vertices);
  }
  out.end();
}

}  // namespace

void write_contour(eps_writer& out, const request& what) {
  write_by_level(out, what, quad_mesh(what.polygons));
}

void write_tri(eps_writer& out, const request& what) {
  write_by_level(out, what, triangle_mesh(what.polygons, what.seed));
}

void write_rows(eps_writer& out, const request& what) {
  const quad_mesh mesh(what.polygons);
  const std::vector<std::uint8_t> levels = field_levels(mesh, what.seed);
  out.begin(what.title, mesh.grid().top_right());
  for (std::size_t i = 0; i < mesh.size(); ++i) {
    if (i == 0 || levels[i] != levels[i - 1]) out.colour(levels[i]);
    out.polygon(mesh.polygon(i));
  }
  out.end();
}

void write_one(eps_writer& out, const request& what) {
  write_changed(out, what, [](quad&, const quad_mesh&) {});
}

void write_mixed(eps_writer& out, const request& what) {
  random_source random(what.seed);
  write_changed(out, what, [&random](quad& vertices, const quad_mesh&) {
    const std::uint64_t choice = random.next();
    if ((choice & 4U) != 0) std::reverse(vertices.begin(), vertices.end());
    std::rotate(vertices.begin(), vertices.begin() + (choice & 3U), vertices.end());
  });
}

void write_shuffle(eps_writer& out, const request& what) {
  const quad_mesh mesh(what.polygons);
  std::vector<std::size_t> order(mesh.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  random_source random(what.seed);
  shuffle(order, random);

  out.begin(what.title, mesh.grid().top_right());
  out.colour(only_level);
  for (const std::size_t i : order) out.polygon(mesh.polygon(i));
  out.end();
}

void write_isolated(eps_writer& out, const request& what) {
  write_changed(out, what, [](quad& vertices, const quad_mesh& mesh) {
    const int side = mesh.grid().pitch() * 3 / 5;
    const point low = vertices.front();
    vertices = {low, {low.x + side, low.y}, {low.x + side, low.y + side}, {low.x, low.y + side}};
  });
}

}  // namespace bench
