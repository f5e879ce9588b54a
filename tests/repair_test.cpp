#include "repair.h"

#include <gtest/gtest.h>

#include "support.h"

namespace trellion::testing {
namespace {

class text_source : public byte_source {
 public:
  explicit text_source(std::string_view text) : text_(text) {}

  std::size_t read(char* buffer, std::size_t capacity) override {
    const std::size_t count = text_.copy(buffer, capacity);
    text_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view text_;
};

struct repaired_text {
  std::string text;  ///< without the line about the program
  repair_summary summary;
};

repaired_text repaired(const std::string& text, const run_settings& settings = {}) {
  captured_text console;
  captured_text out;
  text_source source(text);
  const repair_summary summary = repair(settings, source, text.size(), console, out);
  const std::string all = out.text();
  return {all.substr(all.find('\n') + 1), summary};
}

/// Why the repair of a text ends early.
end_reason ending(const std::string& text, const run_settings& settings = {}) {
  try {
    repaired(text, settings);
  } catch (const early_end& end) {
    return end.reason;
  }
  throw std::logic_error("the repair has come to its end");
}

const std::string square = "0 0 m 2 0 l 2 2 l 0 2 l h f\n";
const std::string right_neighbour = "2 0 m 4 0 l 4 2 l 2 2 l h f\n";
// On the same side of the line from (0 0) to (4 0).
const std::string fold = "0 0 m 4 0 l 1 3 l h f\n4 0 m 0 0 l 3 4 l h f\n";
const std::string line = "7 7 m 9 9 l h f\n";

TEST(repair, sums_up_what_it_has_done) {
  const repair_summary sum = repaired(square + right_neighbour + "x " + square + line).summary;
  EXPECT_EQ(sum.groups, 2);
  EXPECT_EQ(sum.polygons_read, 4);
  EXPECT_EQ(sum.without_area, 1);
  EXPECT_EQ(sum.mergers, 1);
  EXPECT_EQ(sum.polygons_left, 2);
  EXPECT_FALSE(sum.area_lost);

  const repair_summary of_fold = repaired(fold).summary;
  EXPECT_EQ(of_fold.mergers, 1);
  EXPECT_TRUE(of_fold.area_lost);
}

TEST(repair, says_why_it_ends_early) {
  EXPECT_EQ(ending("1 2 x"), end_reason::no_operators);
  EXPECT_EQ(ending(square + square), end_reason::collapsed_path);
}

}  // namespace
}  // namespace trellion::testing
