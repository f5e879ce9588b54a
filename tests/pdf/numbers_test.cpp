#include "pdf/numbers.h"

#include <gtest/gtest.h>

#include <string>

#include "pdf/mesh.h"

namespace trellion::pdf {
namespace {

TEST(numbers, are_read_to_the_last_digit_that_counts) {
  EXPECT_EQ(scaled_number("1.5", 3), 1500);
  EXPECT_EQ(scaled_number("-.0005", 3), -1);
  EXPECT_EQ(scaled_number("+.00049999", 3), 0);
  EXPECT_EQ(scaled_number("007.", 0), 7);
  EXPECT_EQ(scaled_number("35184372088832", 0), max_coordinate);
  EXPECT_EQ(scaled_number("0.00000000000000000000000000000000000001", 9), 0);
  for (const char* bad : {"", "-", ".", "1e5", "--5", "1.2.3", "1-", " 1", "35184372088833",
                          "99999999999999999999999999", "35184372088832.5"}) {
    EXPECT_FALSE(scaled_number(bad, 0)) << bad;
  }
  EXPECT_FALSE(scaled_number("99999", 9));
}

TEST(numbers, are_written_with_few_characters) {
  const auto written = [](std::int64_t value, int digits) {
    std::string text;
    append_number(value, digits, text);
    return text;
  };
  EXPECT_EQ(written(1500, 3), "1.5");
  EXPECT_EQ(written(-250, 3), "-.25");
  EXPECT_EQ(written(1, 9), ".000000001");
  EXPECT_EQ(written(-1200, 0), "-1200");
  EXPECT_EQ(written(0, 3), "0");
  EXPECT_EQ(written(max_coordinate, 0), "35184372088832");

  const auto shortest = [](std::string_view number) {
    std::string text;
    append_shortest(number, text);
    return text;
  };
  for (const char* same : {"0.2810", ".281", "+00.281", "0.28100"})
    EXPECT_EQ(shortest(same), ".281");
  for (const char* zero : {"0", "-0", "+.0", "0.", "-00.00"}) EXPECT_EQ(shortest(zero), "0");
  EXPECT_EQ(shortest("-0100.50"), "-100.5");
}

TEST(numbers, get_the_digits_that_a_page_needs) {
  EXPECT_EQ(digits_for(0.001, 1), 4);
  EXPECT_EQ(digits_for(0.001, 0.1), 3);
  EXPECT_EQ(digits_for(0.001, 72), 6);
  EXPECT_EQ(digits_for(0.001, 0), 0);
  EXPECT_EQ(digits_for(0.001, 1e6), std::nullopt);
}

}  // namespace
}  // namespace trellion::pdf
