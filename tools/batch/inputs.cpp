#include "inputs.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <set>
#include <string>
#include <system_error>

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

bool is_eps_name(const fs::path& name) {
  std::string extension = name.extension();
  std::ranges::transform(extension, extension.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  constexpr std::array<std::string_view, 3> extensions = {".eps", ".epsf", ".epsi"};
  return std::ranges::find(extensions, extension) != extensions.end();
}

/// Whether the file is the result of another one beside it.
bool is_result(const fs::path& file) {
  const std::string stem = file.stem();
  if (!stem.ends_with("_r")) return false;
  const fs::path original = stem.substr(0, stem.size() - 2) + file.extension().string();
  std::error_code ignored;
  return fs::exists(file.parent_path() / original, ignored);
}

/// Adds the EPS files below a folder; returns what prevented it from looking everywhere.
std::error_code add_folder(const fs::path& folder, std::vector<fs::path>& files) {
  std::error_code error;
  const std::size_t first = files.size();
  for (fs::recursive_directory_iterator at(folder, error), end; !error && at != end;
       at.increment(error)) {
    std::error_code ignored;
    if (at->path().filename().string().starts_with('.')) {
      at.disable_recursion_pending();  // hidden: not for us, or even ours
      continue;
    }
    if (is_eps_name(at->path()) && at->is_regular_file(ignored) && !is_result(at->path())) {
      files.push_back(at->path());
    }
  }
  std::sort(files.begin() + static_cast<std::ptrdiff_t>(first), files.end());
  return error;
}

}  // namespace

fs::path directory_of(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : ".";
}

fs::path result_path(const fs::path& input) {
  return input.parent_path() / (input.stem().string() + "_r" + input.extension().string());
}

std::vector<fs::path> find_inputs(const std::vector<fs::path>& named, bool& complete) {
  std::vector<fs::path> files;
  for (const fs::path& name : named) {
    std::error_code error;
    if (fs::is_directory(name, error)) {
      error = add_folder(name, files);
      if (!error) continue;
      complete = false;
      std::fprintf(stderr, "trellion-batch: cannot look into all of '%s': %s\n", name.c_str(),
                   error.message().c_str());
    } else {
      files.push_back(name);
    }
  }
  std::set<fs::path> seen;
  std::erase_if(files, [&seen](const fs::path& file) {
    std::error_code ignored;
    return !seen.insert(fs::weakly_canonical(directory_of(file), ignored) / file.filename()).second;
  });
  return files;
}

}  // namespace trellion::batch
