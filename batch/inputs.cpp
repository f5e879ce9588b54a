#include "batch/inputs.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <set>
#include <string>
#include <system_error>

#include "batch/pdf_support.h"
#include "batch/text.h"

namespace trellion::batch {
namespace {

namespace fs = std::filesystem;

std::string small_extension(const fs::path& name) {
  std::string extension = name.extension();
  std::ranges::transform(extension, extension.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

bool is_figure_name(const fs::path& name) {
  constexpr std::array<std::string_view, 3> extensions = {".eps", ".epsf", ".epsi"};
  return std::ranges::find(extensions, small_extension(name)) != extensions.end() ||
         (has_pdf && is_pdf_name(name));
}

/// The name of the file that one of this name would be the result of; empty when of none.
fs::path original_of(const fs::path& file) {
  const std::string stem = file.stem();
  if (!stem.ends_with("_r")) return {};
  return directory_of(file) / (stem.substr(0, stem.size() - 2) + file.extension().string());
}

bool is_result(const fs::path& file) {
  const fs::path original = original_of(file);
  std::error_code ignored;
  return !original.empty() && fs::exists(original, ignored);
}

/// Two spellings of one file's place give the same.
fs::path place_of(const fs::path& file) {
  std::error_code ignored;
  return fs::weakly_canonical(directory_of(file), ignored) / file.filename();
}

/// Adds the figures below a folder; false when it cannot look everywhere.
bool add_folder(const fs::path& folder, std::vector<fs::path>& files) {
  bool complete = true;
  const auto first = static_cast<std::ptrdiff_t>(files.size());
  std::vector<fs::path> folders = {folder};
  while (!folders.empty()) {
    const fs::path looked_into = std::move(folders.back());
    folders.pop_back();
    std::error_code error;
    for (fs::directory_iterator at(looked_into, error), end; !error && at != end;
         at.increment(error)) {
      const fs::path& path = at->path();
      if (path.filename().string().starts_with('.')) continue;  // hidden, or even ours
      std::error_code ignored;
      const bool is_folder = at->is_directory(ignored) && !at->is_symlink(ignored);
      if (is_folder) folders.push_back(path);
      if (is_figure_name(path) && at->is_regular_file(ignored) && !is_result(path)) {
        files.push_back(path);
      }
    }
    if (!error) continue;
    complete = false;
    complain("cannot look into '" + looked_into.string() + "': " + error.message());
  }
  std::sort(files.begin() + first, files.end());
  return complete;
}

}  // namespace

bool is_pdf_name(const fs::path& name) { return small_extension(name) == ".pdf"; }

fs::path directory_of(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : ".";
}

fs::path result_path(const fs::path& input) {
  return input.parent_path() / (input.stem().string() + "_r" + input.extension().string());
}

std::vector<fs::path> find_inputs(const std::vector<fs::path>& named, bool& complete) {
  std::vector<fs::path> files;
  for (const fs::path& name : named) {
    std::error_code ignored;
    if (!fs::is_directory(name, ignored)) {
      files.push_back(name);
    } else if (!add_folder(name, files)) {
      complete = false;
    }
  }
  std::set<fs::path> places;
  std::erase_if(files, [&](const fs::path& file) { return !places.insert(place_of(file)).second; });
  // As with *.eps: the result of another input is none.
  std::erase_if(files, [&](const fs::path& file) {
    const fs::path original = original_of(file);
    return !original.empty() && places.contains(place_of(original));
  });
  return files;
}

bool is_same_place(const fs::path& a, const fs::path& b) {
  std::error_code ignored;
  return place_of(a) == place_of(b) || fs::equivalent(a, b, ignored);
}

}  // namespace trellion::batch
