#include "batches.h"

#include <filesystem>

namespace trellion::testing {

std::string figure_of(const std::string& page) {
  return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 20 20\n%%EndComments\n"
         "/m {moveto} def /l {lineto} def /h {closepath} def /f {fill} def 0.1 dup scale\n" +
         page + "showpage\n";
}

std::string plain_figure(unsigned seed) {
  return figure_of("0.6 setgray\n" + to_postscript(random_mesh(seed, 20, 20)));
}

batches::~batches() {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory.path())) {
    EXPECT_FALSE(entry.path().filename().string().starts_with(".trellion-batch"));
  }
}

outcome batches::run(const std::string& arguments, const std::string& before) {
  outcome result = shell(before + "trellion-batch --report t.tsv " + arguments, directory);
  report_.clear();
  const std::vector<std::string> lines = split(directory.read("t.tsv"), '\n');
  if (lines.empty()) return result;
  const std::vector<std::string> headings = split(lines[0], '\t');
  for (std::size_t n = 1; n < lines.size(); ++n) {
    const std::vector<std::string> fields = split(lines[n] + '\t', '\t');
    EXPECT_EQ(fields.size(), headings.size()) << lines[n];
    for (std::size_t i = 0; i < std::min(fields.size(), headings.size()); ++i) {
      report_[fields.front()][headings[i]] = fields[i];
    }
  }
  return result;
}

std::string batches::told(const std::string& file, const std::string& column) const {
  const auto row = report_.find(file);
  if (row == report_.end()) return "no row";
  const auto field = row->second.find(column);
  return field == row->second.end() ? "no column" : field->second;
}

std::map<std::string, std::string> batches::results() const {
  std::map<std::string, std::string> all;
  for (const auto& [file, row] : report_) {
    all[file] = told(file, "result");
    if (const std::string reason = told(file, "reason"); !reason.empty())
      all[file] += ": " + reason;
  }
  return all;
}

bool batches::exists(const std::string& name) const {
  return std::filesystem::exists(directory.path() / name);
}

}  // namespace trellion::testing
