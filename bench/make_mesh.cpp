// make_mesh FAMILY POLYGONS SEED [long]: writes a complete EPS file of a mesh to standard output.
// The same arguments give the same file.

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <system_error>

#include "eps_writer.h"
#include "families.h"

namespace {

using namespace bench;

constexpr std::size_t fewest_polygons = 100;
constexpr std::size_t most_polygons = 20'000'000;

int usage() {
  std::fputs("Usage: make_mesh FAMILY POLYGONS SEED [long]\n\n", stderr);
  for (const family& f : all_families()) {
    std::fprintf(stderr, "  %-9s %s\n", f.name.data(), f.purpose.data());
  }
  std::fprintf(stderr, "\nPOLYGONS from %zu to %zu; long: moveto lineto closepath fill\n",
               fewest_polygons, most_polygons);
  return 2;
}

template <class Number>
std::optional<Number> parsed(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

const family* find_family(std::string_view name) {
  for (const family& f : all_families()) {
    if (f.name == name) return &f;
  }
  return nullptr;
}

int run(std::span<const char* const> arguments) {
  const bool with_long_names = arguments.size() == 4 && std::strcmp(arguments[3], "long") == 0;
  if (arguments.size() != 3 && !with_long_names) return usage();
  const family* const chosen = find_family(arguments[0]);
  const auto polygons = parsed<std::size_t>(arguments[1]);
  const auto seed = parsed<std::uint64_t>(arguments[2]);
  if (chosen == nullptr || !seed || !polygons || *polygons < fewest_polygons ||
      *polygons > most_polygons) {
    return usage();
  }

  const std::string title = std::string(arguments[0]) + ' ' + arguments[1] + ' ' + arguments[2];
  eps_writer out(stdout, with_long_names ? long_names : short_names);
  chosen->write(out, {title, *polygons, *seed});
  if (std::fflush(stdout) == 0) return 0;
  throw std::system_error(errno, std::generic_category(), "cannot write");
}

}  // namespace

int main(int argc, char* argv[]) {
  try {
    return run({argv + std::min(argc, 1), argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_mesh: %s\n", error.what());
    return 2;
  }
}
