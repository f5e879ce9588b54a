#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "pdf/graphics_state.h"
#include "pdf/mesh.h"
#include "pdf/outlines.h"
#include "pdf/paints.h"
#include "pdf/texts.h"

namespace trellion::pdf {

/// Writes what takes the place of a stretch of a content stream. Of the state it sets only what
/// something that is painted needs.
class content_writer {
 public:
  /// `before` is the state where the stretch begins. Both must outlive the writer. The text may
  /// become about as long as `expected_size`.
  content_writer(const text_table& texts, const graphics_state& before, std::size_t expected_size);

  /// Paints the outlines from `begin` to `end` at once; their places have so many decimals. A pen
  /// closes all but those with an open start; where one has several, it is filled first, and what
  /// lies between them is drawn after that.
  void paint_outlines(const outlines& all, std::size_t begin, std::size_t end, const places& points,
                      int digits, const paint& with);
  /// Paints a path as it was written.
  void paint_path(std::string_view path, std::string_view painter, const paint& with);

  /// Sets what is left of a state to reach, and gives the whole text.
  std::string finish(const graphics_state& after);
  /// The whole text, when nothing depends on the state that it leaves.
  std::string finish() { return std::move(text_); }

 private:
  /// The part of the state that is written.
  struct written_state {
    colour fill;
    colour stroke;
    line_style line;
  };
  void set_state(const paint& with);
  void set_colour(colour& now, const colour& to, bool is_fill);
  void set_text(text_id& now, text_id to, std::string_view name);
  void set_line(const line_style& to);
  bool set_all(const graphics_state& to);

  const text_table& texts_;
  const graphics_state& before_;
  written_state now_;
  std::string text_ = "\n";
};

}  // namespace trellion::pdf
