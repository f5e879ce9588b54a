#include "batch/inputs.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>

#include "batch/earlier_result.h"
#include "batch/pdf_support.h"
#include "batch/text.h"
#include "files.h"

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
  return is_eps_name(name) || (has_pdf && is_pdf_name(name));
}

/// The name of the file that one of this name would be the result of; empty when of none.
fs::path original_of(const fs::path& file) {
  const std::string stem = file.stem();
  if (!stem.ends_with("_r")) return {};
  return directory_of(file) / (stem.substr(0, stem.size() - 2) + file.extension().string());
}

/// Whether a file is a result of ours, of an original that is there.
bool is_result(const fs::path& file) {
  const fs::path original = original_of(file);
  std::error_code ignored;
  if (original.empty() || !fs::exists(original, ignored)) return false;
  try {
    const earlier_result found = look_for_result(file, original);
    return found == earlier_result::complete || found == earlier_result::unfinished;
  } catch (const run_error&) {
    return false;
  }
}

/// Two spellings of one file's place give the same.
fs::path place_of(const fs::path& file) {
  std::error_code ignored;
  return fs::weakly_canonical(directory_of(file), ignored) / file.filename();
}

/// Gathers figures, each once.
class input_search {
 public:
  explicit input_search(fs::path output_directory)
      : output_directory_(std::move(output_directory)) {}

  void add_named(const fs::path& file) {
    add(file, output_directory_.empty() ? result_path(file) : output_directory_ / file.filename());
  }
  void add_folder(const fs::path& folder);
  found_inputs end();

 private:
  void add(const fs::path& file, const fs::path& result) {
    if (places_.insert(place_of(file)).second) found_.figures.push_back({file, result, {}});
  }
  [[nodiscard]] bool is_output_directory(const fs::path& folder) const {
    std::error_code ignored;
    return !output_directory_.empty() && fs::equivalent(folder, output_directory_, ignored);
  }

  fs::path output_directory_;
  found_inputs found_;
  std::set<fs::path> places_;
};

/// Adds the figures below a folder.
void input_search::add_folder(const fs::path& folder) {
  std::vector<fs::path> files;
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
      if (is_folder && !is_output_directory(path)) folders.push_back(path);
      const bool is_figure = is_figure_name(path) && at->is_regular_file(ignored);
      if (is_figure && !is_marked_file(path) && !is_result(path)) files.push_back(path);
    }
    if (!error) continue;
    found_.complete = false;
    complain("cannot look into '" + looked_into.string() + "': " + error.message());
  }
  std::ranges::sort(files);
  for (const fs::path& file : files) {
    add(file, output_directory_.empty() ? result_path(file)
                                        : output_directory_ / file.lexically_relative(folder));
  }
}

/// Sets aside what is no figure to work on, or cannot be.
found_inputs input_search::end() {
  // As with *.eps: the result of another input is none.
  std::erase_if(found_.figures, [&](const work_item& item) {
    const fs::path original = original_of(item.file);
    const bool is_other = !original.empty() && places_.contains(place_of(original));
    if (!is_other || !is_result(item.file)) return false;
    found_.results.push_back(item.file);
    return true;
  });
  std::set<fs::path> taken;
  for (work_item& item : found_.figures) {
    if (is_marked_file(item.file)) continue;  // it gets no result
    if (place_of(item.result) == place_of(item.file)) {
      item.refusal = "its result would take its place";
    } else if (!taken.insert(place_of(item.result)).second) {
      item.refusal = "'" + item.result.string() + "' is the result of another figure already";
    }
  }
  return std::move(found_);
}

}  // namespace

bool is_eps_name(const fs::path& name) {
  constexpr std::array<std::string_view, 3> extensions = {".eps", ".epsf", ".epsi"};
  return std::ranges::find(extensions, small_extension(name)) != extensions.end();
}

bool is_pdf_name(const fs::path& name) { return small_extension(name) == ".pdf"; }

fs::path directory_of(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : ".";
}

fs::path result_path(const fs::path& input) {
  return input.parent_path() / (input.stem().string() + "_r" + input.extension().string());
}

found_inputs find_inputs(const std::vector<fs::path>& named, const fs::path& output_directory) {
  input_search search(output_directory);
  for (const fs::path& name : named) {
    std::error_code ignored;
    if (fs::is_directory(name, ignored)) {
      search.add_folder(name);
    } else {
      search.add_named(name);
    }
  }
  return search.end();
}

std::vector<fs::path> names_in(const std::string& list) {
  const char end = list.find('\0') == std::string::npos ? '\n' : '\0';
  std::vector<fs::path> names;
  std::istringstream lines(list);
  for (std::string name; std::getline(lines, name, end);) {
    if (end == '\n' && name.ends_with('\r')) name.pop_back();
    if (!name.empty()) names.emplace_back(name);
  }
  return names;
}

bool is_same_place(const fs::path& a, const fs::path& b) {
  std::error_code ignored;
  return place_of(a) == place_of(b) || fs::equivalent(a, b, ignored);
}

}  // namespace trellion::batch
