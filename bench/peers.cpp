// peers FILE: unites the polygons of a file of make_mesh with GEOS, colour by colour, and prints
//
//     UNION_SECONDS READING_SECONDS GROUPS POLYGONS_BEFORE POLYGONS_AFTER POINTS_AFTER AREA_CHANGE
//
// in seconds of processor time. Reading is all that comes before the union: the file, its numbers,
// and the geometry objects. Nothing is written. AREA_CHANGE compares the areas of input and result.

#include <geos_c.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <exception>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct geometry_deleter {
  void operator()(GEOSGeometry* geometry) const { GEOSGeom_destroy(geometry); }
};
using geometry = std::unique_ptr<GEOSGeometry, geometry_deleter>;

struct totals {
  double union_seconds = 0;
  double reading_seconds = 0;
  long groups = 0;
  long polygons_before = 0;
  long polygons_after = 0;
  long points_after = 0;
  double area_before = 0;
  double area_after = 0;
};

double cpu_seconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

std::string file_text(const char* name) {
  std::ifstream file(name, std::ios::binary | std::ios::ate);
  if (!file) throw std::runtime_error(std::string("cannot open ") + name);
  std::string text(static_cast<std::size_t>(file.tellg()), '\0');
  file.seekg(0);
  if (!file.read(text.data(), static_cast<std::streamsize>(text.size()))) {
    throw std::runtime_error(std::string("cannot read ") + name);
  }
  return text;
}

/// The lines of a text, one after the other.
class line_reader {
 public:
  explicit line_reader(std::string_view text) : rest_(text) {}

  bool next(std::string_view& line) {
    if (rest_.empty()) return false;
    const std::size_t end = rest_.find('\n');
    line = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    return true;
  }

 private:
  std::string_view rest_;
};

bool is_polygon(std::string_view line) {
  return line.ends_with(" h f") || line.ends_with(" closepath fill");
}

/// The numbers of a polygon's line, x and y by turns; the operators are passed over.
void read_vertices(std::string_view line, std::vector<double>& numbers) {
  numbers.clear();
  const char* position = line.data();
  const char* const end = position + line.size();
  while (position != end) {
    double value = 0;
    const auto [behind, error] = std::from_chars(position, end, value);
    if (error == std::errc{}) numbers.push_back(value);
    position = behind;
    while (position != end && *position != ' ') ++position;
    while (position != end && *position == ' ') ++position;
  }
}

geometry make_polygon(std::string_view line, std::vector<double>& numbers) {
  read_vertices(line, numbers);
  if (numbers.size() < 6 || numbers.size() % 2 != 0) throw std::runtime_error("no polygon");
  numbers.push_back(numbers[0]);
  numbers.push_back(numbers[1]);
  GEOSCoordSequence* const points =
      GEOSCoordSeq_copyFromBuffer(numbers.data(), static_cast<unsigned>(numbers.size() / 2), 0, 0);
  geometry polygon(GEOSGeom_createPolygon(GEOSGeom_createLinearRing(points), nullptr, 0));
  if (!polygon) throw std::runtime_error("GEOS takes no polygon from: " + std::string(line));
  return polygon;
}

double area(const geometry& shape) {
  double value = 0;
  GEOSArea(shape.get(), &value);
  return value;
}

void unite(std::vector<GEOSGeometry*>& polygons, totals& sum) {
  if (polygons.empty()) return;
  const double start = cpu_seconds();
  const geometry all(GEOSGeom_createCollection(GEOS_MULTIPOLYGON, polygons.data(),
                                               static_cast<unsigned>(polygons.size())));
  const double united_from = cpu_seconds();
  const geometry united(GEOSCoverageUnion(all.get()));
  sum.union_seconds += cpu_seconds() - united_from;
  sum.reading_seconds += united_from - start;
  if (!united) throw std::runtime_error("the union failed");

  ++sum.groups;
  sum.polygons_before += static_cast<long>(polygons.size());
  sum.polygons_after += GEOSGetNumGeometries(united.get());
  sum.points_after += GEOSGetNumCoordinates(united.get());
  sum.area_before += area(all);
  sum.area_after += area(united);
  polygons.clear();
}

totals unite_file(const char* name) {
  totals sum;
  double since = cpu_seconds();
  const std::string text = file_text(name);
  line_reader lines(text);
  std::vector<double> numbers;
  std::vector<GEOSGeometry*> polygons;
  for (std::string_view line; lines.next(line);) {
    if (is_polygon(line)) {
      polygons.push_back(make_polygon(line, numbers).release());
    } else if (line.ends_with("setrgbcolor") || line == "showpage") {
      sum.reading_seconds += cpu_seconds() - since;
      unite(polygons, sum);
      since = cpu_seconds();
    }
  }
  return sum;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 2) {
    std::fputs("Usage: peers FILE\n", stderr);
    return 2;
  }
  initGEOS(nullptr, nullptr);
  int status = 0;
  try {
    const totals sum = unite_file(argv[1]);
    std::printf("%.6f %.6f %ld %ld %ld %ld %.3g\n", sum.union_seconds, sum.reading_seconds,
                sum.groups, sum.polygons_before, sum.polygons_after, sum.points_after,
                std::abs(sum.area_after - sum.area_before) / sum.area_before);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "peers: %s\n", error.what());
    status = 2;
  }
  finishGEOS();
  return status;
}
