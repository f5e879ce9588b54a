#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "files.h"
#include "setup.h"
#include "walk.h"

namespace trellion::testing {

/// A writer whose bytes end up in a string.
class captured_text {
 public:
  operator text_writer&() { return writer_; }
  /// Everything written so far.
  std::string text() {
    writer_.flush();
    return sink_.bytes;
  }

 private:
  struct string_sink : byte_sink {
    void write(std::string_view more) override { bytes += more; }
    std::string bytes;
  };
  string_sink sink_;
  text_writer writer_{sink_};
};

/// What the walk through a list hands over and writes, in words.
std::string walk_in_words(const token_list& list, const drawing_token_set& operators,
                          kept_polygons* kept = nullptr);

/// The bytes of a file; empty when it cannot be read.
std::string read_file(const std::filesystem::path& path);

/// The parts of a text that end with a character; the last need not.
std::vector<std::string> split(const std::string& text, char end);

/// A directory of its own, removed with the object.
class scratch_directory {
 public:
  scratch_directory();
  ~scratch_directory();
  scratch_directory(const scratch_directory&) = delete;
  scratch_directory& operator=(const scratch_directory&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  void write(const std::string& name, std::string_view text) const;
  [[nodiscard]] std::string read(const std::string& name) const;

 private:
  std::filesystem::path path_;
};

/// Makes a directory the current one for a while.
class working_directory {
 public:
  explicit working_directory(const std::filesystem::path& path)
      : previous_(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ~working_directory() { std::filesystem::current_path(previous_); }
  working_directory(const working_directory&) = delete;
  working_directory& operator=(const working_directory&) = delete;

 private:
  std::filesystem::path previous_;
};

struct outcome {
  int status;
  std::string out;
  std::string err;
};

/// Runs a shell command in the directory; `trellion` is the program.
outcome shell(const std::string& command, const scratch_directory& directory);

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool calls_can_fail = false;  // the sanitizer must be loaded before all others
#else
inline constexpr bool calls_can_fail = true;
#endif

/// What to put before a program in a command to make its n-th call of a system function, from 1,
/// fail with an error number. failing_calls.cpp has the functions. The program's children are left
/// alone. Works where calls_can_fail.
std::string failing(std::string_view function, int n, int error_number);

/// The text with the digits of the time spent and of the date and time of repair made zeros.
std::string masked(const std::string& text);

/// The operators m, l, and h followed by f.
drawing_token_set mlhf();

using vertex = std::array<int, 2>;
using polygon = std::vector<vertex>;

/// Twice the area, positive when counter-clockwise.
std::int64_t doubled_area(const polygon& p);

/// Cells of a grid, some split into triangles and some with an extra point on a side: polygons
/// that tile a rectangle without overlap, all counter-clockwise, a part of them left out.
std::vector<polygon> random_mesh(unsigned seed, int columns, int rows);

/// The polygons in PostScript, drawn with m, l, h and f, coordinates as they are.
std::string to_postscript(const std::vector<polygon>& polygons);

}  // namespace trellion::testing
