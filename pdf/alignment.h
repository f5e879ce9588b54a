#pragma once

#include <cstdint>
#include <optional>

#include "pdf/mesh.h"

namespace trellion::pdf {

/// A mesh whose columns and rows are even again. Programs write a grid as corners and sizes, each
/// rounded by itself, so that the last digit of neighbours differs and they no longer meet. Where
/// there are many places to a column, the columns that lie within the tolerance of each other, in
/// the units of places, become the one that most of their places have; likewise rows. Nothing
/// when nothing moves, or a polygon would lose its shape by it.
std::optional<mesh> with_even_columns(const mesh& of, std::int64_t tolerance);

}  // namespace trellion::pdf
