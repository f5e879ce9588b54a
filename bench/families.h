#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "eps_writer.h"

namespace bench {

/// What is to be written.
struct request {
  std::string_view title;
  std::size_t polygons = 0;  ///< about as many as there will be
  std::uint64_t seed = 0;
};

/// A kind of file, and what it is to show.
struct family {
  std::string_view name;
  std::string_view purpose;
  void (*write)(eps_writer& out, const request& what);
};

/// All kinds of files.
std::span<const family> all_families();

// Grids, in meshes that cover the picture.

/// Quads, level by level: what plotting programs write.
void write_contour(eps_writer& out, const request& what);
void write_tri(eps_writer& out, const request& what);
void write_rows(eps_writer& out, const request& what);
void write_one(eps_writer& out, const request& what);
void write_mixed(eps_writer& out, const request& what);
void write_shuffle(eps_writer& out, const request& what);
void write_isolated(eps_writer& out, const request& what);

// Shapes that are hard on a program that joins polygons.

void write_gear(eps_writer& out, const request& what);
void write_bumps(eps_writer& out, const request& what);
void write_book(eps_writer& out, const request& what);

// What somebody could make, or draw by mistake, to keep such a program busy.

void write_collide(eps_writer& out, const request& what);
void write_words(eps_writer& out, const request& what);
void write_stack(eps_writer& out, const request& what);
void write_kites(eps_writer& out, const request& what);
void write_ladder(eps_writer& out, const request& what);
void write_fan(eps_writer& out, const request& what);

// Files that are not mostly polygons, as large as the one of write_contour.

void write_numbers(eps_writer& out, const request& what);
void write_text(eps_writer& out, const request& what);

}  // namespace bench
