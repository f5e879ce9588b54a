#include "batch/programs.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

bool is_executable(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored) && ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::optional<std::string> find_program(const std::string& name) {
  const char* const variable = std::getenv("PATH");
  std::string_view path = variable == nullptr ? "" : variable;
  while (!path.empty()) {
    const std::string_view entry = path.substr(0, path.find(':'));
    path.remove_prefix(std::min(path.size(), entry.size() + 1));
    const fs::path candidate = fs::path(entry) / name;
    if (is_executable(candidate)) return fs::absolute(candidate).string();
  }
  return std::nullopt;
}

}  // namespace trellion::batch
