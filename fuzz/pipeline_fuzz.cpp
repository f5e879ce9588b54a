#include "fuzz_support.h"
#include "postscript_path_queue.h"
#include "repair.h"
#include "setup.h"
#include "support.h"
#include "tokens.h"
#include "walk.h"

// A whole repair in memory. The last byte of the input chooses the settings.

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
    const drawing_token_set operators = drawing_token_scan(list, min_separators, false, console);
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

  testing::captured_text console;
  testing::captured_text repaired;
  fuzzing::source_in_pieces source(text);
  try {
    repair(settings, source, text.size(), console, repaired);
  } catch (const early_end&) {
    fuzzing::require(console.text().ends_with('\n'), "the console's last line is ended");
  } catch (const coordinate_error&) {
    // A number too large for a coordinate, say.
  }
  check_walk(text, settings.min_separators);
  return 0;
}
