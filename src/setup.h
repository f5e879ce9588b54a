#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bytes.h"
#include "polygon_list.h"
#include "tokens.h"

namespace trellion {

/// The operators with which a file draws its polygons: one that starts a polygon, one that adds a
/// vertex, one that ends it, and the further operators that follow the last one every time.
struct drawing_token_set {
  std::int64_t token_count = 0;  ///< tokens covered by the runs of polygons found with the set
  token moveto_token;
  token lineto_token;
  token end_polygon_token;
  std::vector<token> trailing_operators;
};

/// Finds the operators that cover the most tokens in runs of two or more polygons, and reports
/// them on the console (in verbose mode every run as well). At least `min_separators` operators,
/// the end-polygon operator included, must stand between two polygons. When there is no such run
/// the console gets a fatal line and the run ends early. Linear in the length of the list.
///
/// The first plain polygons of a run go to `kept`, if that is given; nothing does when it turns out
/// that polygons drawn with other operators are to be joined.
drawing_token_set drawing_token_scan(const token_list& list, std::int32_t min_separators,
                                     bool verbose, text_writer& console,
                                     kept_polygons* kept = nullptr);

/// Writes a set and its count: on one line when `compact`, with labels otherwise.
void display_dts(const drawing_token_set& set, bool compact, text_writer& console);

/// The macro that strokes a polygon's outline at line width 0 before it fills it, which closes the
/// hairlines between polygons.
struct fill_macro {
  std::string name;  ///< with its leading "/"
  /// Where the list already holds this very definition; the first such place.
  std::optional<token_list> existing_definition;

  /// The operator that calls the macro.
  [[nodiscard]] std::string_view operator_text() const { return std::string_view(name).substr(1); }
};

/// Chooses a name for the macro that the list does not use for anything else: "/pgf", or that with
/// as many "x" after it as it takes. After 100 names that are taken the console gets a fatal line
/// and the run ends early.
fill_macro pgf_setup(const token_list& list, bool verbose, text_writer& console);

/// Writes the macro's definition as one line.
void write_definition(const fill_macro& macro, text_writer& out);

}  // namespace trellion
