#include <optional>

#include "fuzz_support.h"
#include "postscript_path_queue.h"
#include "repair.h"
#include "setup.h"
#include "support.h"
#include "tokens.h"
#include "walk.h"

// A whole repair in memory, and the same in careful mode. The last byte of the input chooses the
// other settings.

namespace {

using namespace trellion;

run_settings settings_from(unsigned char byte) {
  run_settings settings;
  settings.min_separators = (byte & 1) != 0 ? 1 : 2;
  settings.remove_mesh = (byte & 2) != 0;
  settings.verbose = (byte & 4) != 0;
  settings.merge_limit = (byte & 8) != 0 ? 4 : 0;
  return settings;
}

/// Whether no number is so large that a product of distances could wrap: three characters at most.
bool all_numbers_are_small(std::string_view text) {
  std::size_t length = 0;
  for (const char c : text) {
    length = c == '-' || is_digit(c) ? length + 1 : 0;
    if (length > 3) return false;
  }
  return true;
}

struct outcome {
  repair_summary summary;
  std::optional<end_reason> early_end;
  bool bad_number = false;
};

outcome repaired(std::string_view text, const run_settings& settings) {
  outcome result;
  testing::captured_text console;
  testing::captured_text out;
  fuzzing::source_in_pieces source(text);
  try {
    result.summary = repair(settings, source, text.size(), console, out);
  } catch (const early_end& end) {
    result.early_end = end.reason;
    fuzzing::require(console.text().ends_with('\n'), "the console's last line is ended");
  } catch (const coordinate_error&) {
    result.bad_number = true;  // one too large for a coordinate, say
  }
  return result;
}

/// What careful mode promises, given what comes of the same text without.
void check_careful(std::string_view text, run_settings settings, const outcome& plain) {
  settings.careful = true;
  const outcome careful = repaired(text, settings);
  const repair_summary& sum = careful.summary;
  fuzzing::require(
      careful.bad_number == plain.bad_number || plain.early_end == end_reason::collapsed_path,
      "the same numbers are read");
  if (all_numbers_are_small(text)) {
    fuzzing::require(careful.early_end != end_reason::collapsed_path, "no path collapses");
    fuzzing::require(!sum.area_lost, "no area is lost");
  }
  if (careful.early_end || careful.bad_number) return;
  fuzzing::require(sum.polygons_left == sum.polygons_read - sum.mergers, "no polygon is lost");
}

/// The list's tokens, those of groups as they stand.
std::string walked(const token_list& list, const drawing_token_set& operators) {
  testing::captured_text out;
  walk(list, operators, out, [&](const polygon_group& group) {
    purge({group.begin, group.end}, out);
  });
  return out.text();
}

/// Whether the walk through the text leaves nothing out and doubles nothing.
void check_walk(std::string_view text, std::int32_t min_separators) {
  const token_list list(text);
  testing::captured_text console;
  try {
    kept_polygons kept;
    const drawing_token_set operators =
        drawing_token_scan(list, min_separators, false, console, &kept);
    fuzzing::require(
        testing::walk_in_words(list, operators) == testing::walk_in_words(list, operators, &kept),
        "what the scan has kept makes no difference");
    fuzzing::require(walked(list, operators) == fuzzing::with_plain_layout(text),
                     "the walk hands everything on");
  } catch (const early_end&) {
    fuzzing::require(!console.text().empty(), "the console says why");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const run_settings settings = settings_from(data[size - 1]);
  const std::string_view text = fuzzing::as_text(data, size - 1);

  const outcome plain = repaired(text, settings);
  const repair_summary& sum = plain.summary;
  fuzzing::require(sum.polygons_left == sum.polygons_read - sum.without_area - sum.mergers,
                   "each polygon is joined, left or without area");
  check_careful(text, settings, plain);
  check_walk(text, settings.min_separators);
  return 0;
}
