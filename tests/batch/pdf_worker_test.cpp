#include "batch/pdf_worker.h"

#include <gtest/gtest.h>

#include "support.h"

namespace trellion::testing {
namespace {

using namespace batch;

std::string told(const pdf_outcome& outcome) {
  captured_text out;
  write_outcome(outcome, out);
  return out.text();
}

TEST(pdf_worker, gets_its_request_and_tells_its_outcome_whole) {
  for (const bool careful : {true, false}) {
    const pdf_request request{"/a b/c.pdf", "-d.pdf", careful, !careful};
    const std::vector<std::string> arguments = worker_arguments(request);
    std::vector<const char*> pointers;
    for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
    EXPECT_EQ(read_pdf_worker_arguments(pointers), request);
    pointers.pop_back();
    EXPECT_EQ(read_pdf_worker_arguments(pointers), std::nullopt);
  }
  const move_request move{"/a b/c.pdf", "-d.pdf", {0.01, -0.007}};
  std::vector<const char*> pointers;
  const std::vector<std::string> arguments = worker_arguments(move);
  for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
  EXPECT_EQ(read_pdf_mover_arguments(pointers), move);
  EXPECT_EQ(read_pdf_worker_arguments(pointers), std::nullopt);
  const pdf_outcome outcome{3, 4000, 50, {{1, 595.276, 841.89}, {700, 1e-3, 14400}}};
  const std::string text = told(outcome);
  EXPECT_EQ(read_pdf_outcome(text), outcome);
  EXPECT_EQ(read_pdf_outcome(told({})), pdf_outcome());
  // Whoever was killed while it wrote has told nothing.
  for (std::size_t n = 0; n < text.size(); ++n) EXPECT_FALSE(read_pdf_outcome(text.substr(0, n)));
  EXPECT_FALSE(read_pdf_outcome(text + "more\n"));
}

}  // namespace
}  // namespace trellion::testing
