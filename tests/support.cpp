#include "support.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace trellion::testing {

std::string walk_in_words(const token_list& list, const drawing_token_set& operators,
                          kept_polygons* kept) {
  captured_text out;
  const auto put = [&](auto... numbers) {
    const auto one = [&](auto n) {
      static_cast<text_writer&>(out).put(std::to_string(n)).put(' ');
    };
    (one(numbers), ...);
  };
  const auto hand_over = [&](const polygon_group& group) {
    put(list.n_bytes() - group.begin.n_bytes(), list.n_bytes() - group.end.n_bytes());
    put(group.begin.line_number(), group.end.line_number(), group.last_line);
    for (const std::uint32_t n : group.n_vertices) put(n);
    for (const ps_point& p : group.vertices)
      put(p.coords[0], p.coords[1], list.text_end() - p.text);
    put(std::min(group.first_fault, group.vertices.size()));
  };
  walk(list, operators, out, hand_over, kept);
  return out.text();
}

std::string read_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> split(const std::string& text, char end) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, end);) parts.push_back(part);
  return parts;
}

scratch_directory::scratch_directory() {
  std::string name = std::filesystem::temp_directory_path() / "trellion-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch directory");
  path_ = name;
}

scratch_directory::~scratch_directory() { std::filesystem::remove_all(path_); }

void scratch_directory::write(const std::string& name, std::string_view text) const {
  std::ofstream(path_ / name, std::ios::binary) << text;
}

std::string scratch_directory::read(const std::string& name) const {
  return read_file(path_ / name);
}

namespace {

/// Where the program is; or one that runs that of another system, when the environment names it.
std::string program_directory() {
  const char* const named = std::getenv("TRELLION_PROGRAM_DIRECTORY");
  return named != nullptr ? named : std::filesystem::path(TRELLION_PROGRAM).parent_path().string();
}

}  // namespace

outcome shell(const std::string& command, const scratch_directory& directory) {
  const scratch_directory streams;
  const std::string at = streams.path();
  const std::string line = "cd '" + directory.path().string() + "' && PATH='" +
                           program_directory() + "':$PATH && (" + command + ") >'" + at +
                           "/out' 2>'" + at + "/err'";
  const int status = std::system(line.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, streams.read("out"), streams.read("err")};
}

std::string failing(std::string_view function, int n, int error_number) {
  // The variable for the library ends at a blank; that for its place does not.
  const std::filesystem::path library = TRELLION_FAILING_CALLS;
  return "LD_LIBRARY_PATH='" + library.parent_path().string() + "' LD_PRELOAD='" +
         library.filename().string() + "' TRELLION_FAILS='" + std::string(function) + ' ' +
         std::to_string(n) + ' ' + std::to_string(error_number) + "' ";
}

std::string masked(const std::string& text) {
  static const std::regex time_spent("(Processing completed in   )[0-9]\\.[0-9]{4}(?= seconds)");
  static const std::regex date("(%%Processed by .*) at [0-9]{2}:[0-9]{2} on [0-9/]{10}");
  const auto once = std::regex_constants::format_first_only;
  return std::regex_replace(std::regex_replace(text, time_spent, "$010.0000", once), date,
                            "$1 at 00:00 on 00/00/0000", once);
}

drawing_token_set mlhf() {
  drawing_token_set operators;
  operators.moveto_token.text = "m";
  operators.lineto_token.text = "l";
  operators.end_polygon_token.text = "h";
  operators.trailing_operators.emplace_back().text = "f";
  return operators;
}

std::int64_t doubled_area(const polygon& p) {
  std::int64_t sum = 0;
  for (std::size_t i = 0; i < p.size(); ++i) {
    const vertex& a = p[i];
    const vertex& b = p[(i + 1) % p.size()];
    sum += std::int64_t{a[0]} * b[1] - std::int64_t{b[0]} * a[1];
  }
  return sum;
}

std::vector<polygon> random_mesh(unsigned seed, int columns, int rows) {
  std::mt19937 random(seed);
  const auto one_in = [&random](unsigned n) { return random() % n == 0; };
  std::vector<polygon> mesh;
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x) {
      if (one_in(9)) continue;
      const int x0 = 10 * x;
      const int y0 = 10 * y;
      polygon cell = {{x0, y0}, {x0 + 10, y0}, {x0 + 10, y0 + 10}, {x0, y0 + 10}};
      if (one_in(3)) {
        mesh.push_back({cell[0], cell[1], cell[2]});
        cell = {cell[0], cell[2], cell[3]};
      } else if (one_in(3)) {
        cell.insert(cell.begin() + 1, vertex{x0 + 5, y0});
      }
      const auto first = static_cast<int>(random() % cell.size());
      std::rotate(cell.begin(), cell.begin() + first, cell.end());
      mesh.push_back(cell);
    }
  }
  return mesh;
}

std::string to_postscript(const std::vector<polygon>& polygons) {
  std::string text;
  for (const polygon& p : polygons) {
    const char* op = " m ";
    for (const vertex& v : p) {
      text += std::to_string(v[0]) + ' ' + std::to_string(v[1]) + op;
      op = " l ";
    }
    text += "h f\n";
  }
  return text;
}

}  // namespace trellion::testing
