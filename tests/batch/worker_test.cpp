#include "batch/worker.h"

#include <gtest/gtest.h>

#include "support.h"

namespace trellion::testing {
namespace {

using namespace batch;

std::string told(const repair_outcome& outcome) {
  captured_text out;
  write_outcome(outcome, out);
  return out.text();
}

TEST(worker, gets_its_request_and_tells_its_outcome_whole) {
  const repair_request request{"/a b/c.eps", "-d.eps", 7, 3, true, {{1, 2}, {5, 70}}};
  const std::vector<std::string> arguments = worker_arguments(request);
  std::vector<const char*> pointers;
  for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
  EXPECT_EQ(read_worker_arguments(pointers), request);
  pointers.pop_back();
  EXPECT_EQ(read_worker_arguments(pointers), std::nullopt);

  repair_summary summary{.groups = 1, .polygons_read = 20, .without_area = 300, .mergers = 4000};
  summary.polygons_left = 50000;
  summary.area_lost = true;
  const std::string text = told(summary);
  EXPECT_EQ(told(read_outcome(text).value()), text);
  EXPECT_EQ(std::get<repair_summary>(*read_outcome(text)).mergers, 4000);
  EXPECT_TRUE(std::get<repair_summary>(*read_outcome(text)).area_lost);
  for (const auto reason :
       {end_reason::no_operators, end_reason::no_safe_name, end_reason::collapsed_path}) {
    EXPECT_EQ(std::get<early_end>(read_outcome(told(early_end{reason})).value()).reason, reason);
  }
  // Whoever was killed while it wrote has told nothing.
  for (std::size_t n = 0; n < text.size(); ++n) EXPECT_FALSE(read_outcome(text.substr(0, n)));
  EXPECT_FALSE(read_outcome(text + "more\n"));
}

TEST(worker, repairs_with_care) {
  const scratch_directory directory;
  const repair_request request{
      directory.path() / "a.eps", directory.path() / "b.eps", 0, 2, false, {}};
  const auto repaired = [&](const std::string& text) {
    directory.write("a.eps", text);
    return work(request);
  };
  // Two squares, a line that looks like a polygon, and a square that is drawn twice.
  const std::string line = "7 7 m 9 9 l h f\n";
  const auto outcome = repaired(to_postscript({{{0, 0}, {1, 0}, {1, 1}, {0, 1}},
                                               {{1, 0}, {2, 0}, {2, 1}, {1, 1}},
                                               {{1, 0}, {2, 0}, {2, 1}, {1, 1}}}) +
                                line);
  const auto& summary = std::get<repair_summary>(outcome);
  EXPECT_EQ(summary.mergers, 1);
  EXPECT_EQ(summary.without_area, 1);
  EXPECT_FALSE(summary.area_lost);
  EXPECT_NE(directory.read("b.eps").find("7 7 m"), std::string::npos);
  repair_request less = request;
  less.merge_limit = 3;
  EXPECT_EQ(std::get<repair_summary>(work(less)).mergers, 0);
  less = request;
  less.left_alone = {{1, 1}};
  EXPECT_EQ(std::get<repair_summary>(work(less)).mergers, 0);

  EXPECT_EQ(std::get<early_end>(repaired("%!\n")).reason, end_reason::no_operators);
  EXPECT_THROW(work({directory.path() / "none.eps", directory.path() / "b.eps", 0, 2, false, {}}),
               run_error);
}

}  // namespace
}  // namespace trellion::testing
