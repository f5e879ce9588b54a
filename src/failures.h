#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace trellion {

/// The run cannot go on. `main` prints the text, which says what failed, for which file and why,
/// on standard error and ends with status 2.
class run_error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Why a run ends early.
enum class end_reason {
  usage,           ///< the command line is not understood
  missing_file,    ///< there is no input file of the name
  no_operators,    ///< nothing draws two polygons in a row
  no_safe_name,    ///< every name tried for the macro is taken
  collapsed_path,  ///< two paths cancel each other out
};

/// The run ends early, its last words are on the console already, and the exit status is 0.
struct early_end {
  end_reason reason;
};

/// "cannot WHAT 'NAME': " and the system's reason for the error number.
run_error system_failure(std::string_view what, const std::string& name, int error_number);

/// A read that failed half way. The console has a text of its own for it, and its exit status is
/// that of the texts there; `what` is for standard error.
class read_failure : public run_error {
 public:
  read_failure(const std::string& name, int error_number);

  [[nodiscard]] int error_number() const { return error_number_; }

 private:
  int error_number_;
};

}  // namespace trellion
