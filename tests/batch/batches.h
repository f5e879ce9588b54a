#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "support.h"

namespace trellion::testing {

/// A figure of 20 points whose words m, l, h and f are defined.
std::string figure_of(const std::string& page);

/// A figure that can be repaired.
std::string plain_figure(unsigned seed);

/// What an earlier run may have made of such a figure.
inline const std::string old_result = "%%Processed by trellion \nold\nshowpage\n";

/// Runs of trellion-batch in a directory, in which they leave nothing but results and reports.
class batches : public ::testing::Test {
 protected:
  ~batches() override;

  /// Runs trellion-batch with a report, whatever stands before it in the command.
  outcome run(const std::string& arguments, const std::string& before = "");
  /// A column of the report, for a file whose name is told as in the report.
  [[nodiscard]] std::string told(const std::string& file, const std::string& column) const;
  /// The result and what is said of it, for all files.
  [[nodiscard]] std::map<std::string, std::string> results() const;
  [[nodiscard]] bool exists(const std::string& name) const;

  scratch_directory directory;

 private:
  std::map<std::string, std::map<std::string, std::string>> report_;
};

}  // namespace trellion::testing
