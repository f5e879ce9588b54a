#include "v3_engine.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support.h"

namespace trellion::testing {
namespace {

struct result {
  std::string console;
  std::string paths;
};

/// Merges the polygons, 4 points each, of a text.
result merged(const std::string& text, std::int32_t merge_limit = 0) {
  path_store store;
  captured_text ignored;
  captured_text console;
  captured_text paths;
  const drawing_token_set operators = mlhf();
  const token_range all{token_list(text), token_list(std::string_view(text).substr(text.size()))};
  ps_path_queue queue = tokens_to_ps_path_queue(all, operators.end_polygon_token, store, ignored);
  strata strata = stratify(store, queue);
  v3_process(store, strata, merge_limit, console);
  gather(strata, queue, ignored);
  queue.output(operators, paths);
  return {console.text(), paths.text()};
}

polygon square(int x, int y) { return {{x, y}, {x + 1, y}, {x + 1, y + 1}, {x, y + 1}}; }

std::string progress(int merges) {
  const std::string count = std::to_string(merges);
  return "\x1b[1A  Processing ... mergers :" + std::string(7 - count.size(), ' ') + count + "\n";
}

TEST(engine, repeats_the_progress_line_while_the_count_stays_on_a_hundred) {
  // Three squares that touch nothing: one round each, and one in which the strata run out.
  EXPECT_EQ(merged(to_postscript({square(0, 0), square(5, 5), square(9, 9)})).console,
            "  Processing \n" + progress(0) + progress(0) + progress(0) + progress(0));

  // A row of 101 squares merges from left to right; the two rounds without a partner follow.
  std::vector<polygon> row;
  for (int x = 0; x <= 100; ++x) row.push_back(square(x, 0));
  const result all = merged(to_postscript(row));
  EXPECT_EQ(all.console, "  Processing \n" + progress(0) + progress(100) + progress(100));
  EXPECT_EQ(std::count(all.paths.begin(), all.paths.end(), 'h'), 1);
}

TEST(engine, takes_up_no_path_beyond_the_merge_limit) {
  const std::string squares = to_postscript({square(0, 0), square(1, 0)});
  EXPECT_EQ(std::ranges::count(merged(squares, 3).paths, 'h'), 2);
  EXPECT_EQ(std::ranges::count(merged(squares, 4).paths, 'h'), 1);
  // The stratum of three points is worked whatever the limit.
  const std::string triangles = "0 0 m 1 0 l 0 1 l h f 1 0 m 1 1 l 0 1 l h f";
  EXPECT_EQ(std::ranges::count(merged(triangles, 1).paths, 'h'), 1);
}

TEST(engine, ends_the_run_when_polygons_cancel_out) {
  EXPECT_THROW(merged(to_postscript({square(0, 0), square(0, 0)})), early_end);
}

}  // namespace
}  // namespace trellion::testing
