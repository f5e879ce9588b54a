#include "failures.h"

#include <system_error>

namespace trellion {

run_error system_failure(std::string_view what, const std::string& name, int error_number) {
  return run_error("cannot " + std::string(what) + " '" + name +
                   "': " + std::generic_category().message(error_number));
}

read_failure::read_failure(const std::string& name, int error_number)
    : run_error(system_failure("read", name, error_number)), error_number_(error_number) {}

}  // namespace trellion
