#include "settings.h"

#include <gtest/gtest.h>

#include <sstream>

#include "fields.h"
#include "report.h"
#include "support.h"

namespace trellion::testing {
namespace {

/// The settings in one text, or what the console shows when the run ends early. A file of the name
/// "./s.eps" exists.
std::string settings_for(std::vector<const char*> arguments, const std::string& answers = "") {
  const scratch_directory directory;
  directory.write("s.eps", "");
  directory.write("a b'c.eps", "");
  const working_directory here(directory.path());
  captured_text console;
  std::istringstream input(answers);
  try {
    const run_settings s = obtain_settings(arguments, input, console);
    return s.filename + " " + s.repaired_filename + " m" + std::to_string(s.merge_limit) + " s" +
           std::to_string(s.min_separators) + (s.remove_mesh ? " r" : "") + (s.verbose ? " v" : "");
  } catch (const early_end&) {
    const std::string text = console.text();
    const std::size_t usage = text.find("Usage");
    return usage == std::string::npos ? text : text.substr(0, usage) + "usage";
  }
}

struct settings_case {
  std::vector<const char*> arguments;
  const char* answers;
  const char* expected;
};

TEST(settings, come_from_arguments_or_prompts) {
  const std::string long_name = "'s" + std::string(99, ' ') + "x'\n3\n1\n1\n1\n";
  const std::vector<settings_case> cases = {
      {{"-m5", "s", "-r", "-v", "-s+3"}, "", "s.eps s_r.eps m5 s3 r v"},
      {{"./s.eps", "-m/", "-s,"}, "", "./s.eps ./s_r.eps m0 s2"},
      {{"s.eps", "-m0"}, "", "s.eps s_r.eps m0 s2"},
      {{"./s"}, "", "trellion: fatal error --- file './s' does not exist.\n"},
      {{"-v"}, "", "usage"},
      {{"none.eps", "-x"}, "", "trellion: fatal error --- file 'none.eps' does not exist.\n"},
      {{"s.eps", "-m"}, "", "Unrecognised option -m\nusage"},
      // A later number that is right takes the blame away, and what was read stays.
      {{"s.eps", "-m-1", "-s3"}, "", "s.eps s_r.eps m-1 s3"},
      {{"s.eps", "-x", "-m2"}, "", "s.eps s_r.eps m2 s2"},
      {{"s.eps", "-x", "-m2", "-y"}, "", "Unrecognised option -x\nUnrecognised option -y\nusage"},
      {{}, "s\r\n3\r\n1\n1\n1\n", "s.eps s_r.eps m3 s1"},
      // A name is cut to 100 characters.
      {{}, long_name.c_str(), "s.eps s_r.eps m3 s1"},
      // The empty item leaves the -1 as it was, and the question is asked again.
      {{}, "\n  s.eps junk\nabc\n-1\n , 9\n0\n2 7\n3\n2\n1\n", "s.eps s_r.eps m0 s2 r"},
      {{}, "'a b''c.eps'\n/\n/\n1\n,\n", "a b'c.eps a b'c_r.eps m0 s2"},
      // Yes to the mesh stands when the next answer is unreadable.
      {{}, "s\n0\n2\n2\nwhat\n", "s.eps s_r.eps m0 s2 r v"},
      {{}, "s\n0\n2\n2\n", "s.eps s_r.eps m0 s2 r v"},
      {{}, "s\n0\n2\n1\nwhat\n2\n", "s.eps s_r.eps m0 s2 v"}};
  for (const settings_case& c : cases) {
    EXPECT_EQ(settings_for(c.arguments, c.answers), c.expected) << c.answers;
  }
  for (const auto* bad : {"-m-1", "-s0", "-rv", "-m5x", "-m1.5", "-m2147483648", "-", "", "x", "ab",
                          "other.eps", "-xyz", "-m ", "-m+-5"}) {
    EXPECT_EQ(settings_for({"s.eps", bad}), "usage") << bad;
  }
  EXPECT_TRUE(settings_for({}, "plots/s.eps\n0\n2\n1\n1\n")
                  .ends_with("fatal error --- file 'plots.eps' does not exist.\n"));
  // Where the input ends at a question that would be asked for ever.
  for (const auto* answers : {" \n", "s\n", "s\n-1\n", "s\n0\n", "s\n0\n2\n1\nwhat"}) {
    EXPECT_THROW(settings_for({}, answers), run_error) << answers;
  }
}

TEST(fields, hold_a_value_or_asterisks) {
  EXPECT_EQ(integer_field(-42, 8), "     -42");
  EXPECT_EQ(integer_field(1000, 3), "***");
  EXPECT_EQ(fixed_field(-0.001F, 6, 2), " -0.00");
  EXPECT_EQ(fixed_field(-100.0F, 6, 2), "******");
}

TEST(report, works_in_single_precision) {
  captured_text console;
  report_reduction(std::uint64_t{1} << 32 | 1000, 250, console);
  report_reduction(3, 6, console);
  // Late in the day a count of milliseconds is rounded to a multiple of eight.
  report_time(80000000, 80000003, console);
  report_time(86399000, 1000, console);
  report_time(1000, 2500, console);
  EXPECT_EQ(console.text(),
            "Achieved  75.00% reduction in file size.\n"
            "Achieved ******% reduction in file size.\n"
            "Processing completed in   0.0000 seconds.\n"
            "Processing completed in ******** seconds.\n"
            "Processing completed in   1.5000 seconds.\n");
}

}  // namespace
}  // namespace trellion::testing
