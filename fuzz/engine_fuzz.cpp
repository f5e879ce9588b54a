#include <array>

#include "engine_runs.h"
#include "fuzz_support.h"
#include "support.h"

// The engine against the plain one. The first byte chooses the settings; every further byte is a
// vertex on a grid of 8 by 8, and its two upper bits tell what else it is.

namespace {

using namespace trellion;

constexpr int last_of_polygon = 1;
constexpr int far_out = 3;
// The largest distance between two grid points whose coordinates still have six digits: squares of
// such distances in thousandths do not fit into 64 bits.
constexpr int far_step = 999999 / 7;

std::vector<testing::polygon> polygons_from(std::string_view bytes) {
  std::vector<testing::polygon> polygons(1);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    const int kind = byte >> 6;
    const int step = kind == far_out ? far_step : 1;
    polygons.back().push_back({(byte & 7) * step, (byte >> 3 & 7) * step});
    if (kind == last_of_polygon) polygons.emplace_back();
  }
  if (polygons.back().empty()) polygons.pop_back();
  return polygons;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  // Small sizes put the structures for large paths and crowds to work on small groups.
  constexpr std::array<engine_sizes, 6> all_sizes = {
      {{}, {3, 64, 0, 0}, {64, 2, 1}, {4, 3, 3, 0}, {3, 1, 0, 1}, {6, 1, 64, 2}}};
  const std::int32_t merge_limit = data[0] & 7;
  const engine_sizes sizes = all_sizes[(data[0] >> 3) % all_sizes.size()];

  const std::string text =
      testing::to_postscript(polygons_from(fuzzing::as_text(data + 1, size - 1)));
  fuzzing::require(
      testing::merged(text, merge_limit, sizes) == testing::plainly_merged(text, merge_limit),
      "the engines agree");
  return 0;
}
