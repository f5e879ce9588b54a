#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "pdf/content_repair.h"

namespace trellion::pdf {

/// What trellion-pdf is asked to do.
struct pdf_options {
  std::vector<std::filesystem::path> inputs;
  std::filesystem::path output;  ///< empty: beside each input
  content_settings contents;
  bool replace = false;    ///< existing results
  std::string pdftocairo;  ///< the program to compare pages with; empty: they are not
};

/// Ends the program: with help or version on standard output and status 0, or with a line about a
/// mistake on standard error and status 2.
struct early_exit {
  int status;
};

/// Reads the command line and finds the program. Throws early_exit.
pdf_options parse_options(int argc, const char* const* argv);

/// Tells the user on standard error what is the matter, as far as it can be shown.
void complain(const std::string& what);

}  // namespace trellion::pdf
