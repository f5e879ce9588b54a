#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "support.h"

namespace trellion::testing {
namespace {

using options = std::set<std::string>;

std::string document(const std::string& name) { return read_file(TRELLION_SOURCE "/" + name); }

/// What an expression's first group matches anywhere in the text.
options all_matches(const std::string& text, const std::string& expression) {
  const std::regex pattern(expression, std::regex::multiline);
  options found;
  for (std::sregex_iterator at(text.begin(), text.end(), pattern), end; at != end; ++at) {
    found.insert((*at)[1]);
  }
  return found;
}

/// From the first text up to the second.
std::string part(const std::string& text, const std::string& first, const std::string& last) {
  const std::size_t begin = text.find(first);
  EXPECT_NE(begin, std::string::npos) << first;
  return text.substr(begin, text.find(last, begin + first.size()) - begin);
}

/// Expects the completions of a program in both shells to offer the options.
void expect_completed(const std::string& program, const options& known) {
  const std::string bash_name = std::regex_replace(program, std::regex("-"), "_");
  const std::string bash =
      part(document("completions/trellion.bash"), '_' + bash_name + "()", "\n}");
  EXPECT_EQ(all_matches(part(bash, "-W '", "' ").substr(4), "(--?[a-z][-a-z]*)"), known);
  const std::string zsh =
      part(document("completions/_trellion"), "_complete_" + program + "()", "\n}");
  EXPECT_EQ(all_matches(zsh, "[{,')](--?[a-z](?:[-a-z]*[a-z])?)(?==?-?[\\[,}])"), known);
}

/// The options whose descriptions a manual page lists.
options of_manual(const std::string& name) {
  std::string heads;
  for (const std::string& head : all_matches(document(name), "^\\.It (Fl .*)$"))
    heads += head + '\n';
  heads = std::regex_replace(heads, std::regex("Fl Fl "), "--");
  heads = std::regex_replace(heads, std::regex("Fl "), "-");
  return all_matches(heads, "(--?[a-z][-a-z]*)");
}

TEST(documents, list_the_options_of_trellion) {
  const scratch_directory directory;
  directory.write("x.eps", "0 0 m 1 0 l 1 1 l h f 1 0 m 2 0 l 1 1 l h f\n");
  options accepted;
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    const std::string option = std::string("-") + letter;
    const std::string run = "trellion x.eps " + option;
    for (const auto* value : {"", "3"}) {
      if (shell(run + value, directory).out.find("\nUsage") == std::string::npos) {
        accepted.insert(option);
      }
    }
  }
  EXPECT_EQ(all_matches(shell("trellion -r", directory).out, "\\[(-[a-z])"), accepted);
  EXPECT_EQ(of_manual("doc/man/trellion.1"), accepted);
  const std::string readme = part(document("doc/details.md"), "## trellion\n", "## ");
  EXPECT_EQ(all_matches(readme, "^\\| `(-[a-z])"), accepted);
  expect_completed("trellion", accepted);
}

/// Expects all texts on a program to list the options that it knows. A value that suits all of them
/// is needed, and one of them.
void expect_listed(const std::string& program, const std::string& value,
                   const std::string& typical) {
  const scratch_directory directory;
  const std::string help = shell(program + " --help", directory).out;
  const options known =
      all_matches(part(help, "Options:", "Exit"), "[ ,](--?[a-z][-a-z]*)(?=[ ,\\[])");
  EXPECT_TRUE(known.contains(typical));
  for (const std::string& option : known) {
    const std::string said = shell(program + ' ' + option + ' ' + value + " --help", directory).out;
    EXPECT_EQ(said, option == "--version" ? said : help) << option;
  }
  EXPECT_EQ(of_manual("doc/man/" + program + ".1"), known);
  expect_completed(program, known);
}

TEST(documents, list_the_options_of_trellion_batch) {
  expect_listed("trellion-batch", "100", "--auto");
}

#ifdef TRELLION_HAS_PDF
TEST(documents, list_the_options_of_trellion_pdf) { expect_listed("trellion-pdf", "1", "--close"); }
#endif

}  // namespace
}  // namespace trellion::testing
