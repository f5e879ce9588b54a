#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "pdf/content_reader.h"
#include "pdf/mesh.h"

namespace trellion::pdf {

/// A subpath: its corners, without the first repeated at the end.
struct subpath {
  std::uint32_t begin = 0;  // in the corners of the path
  std::uint32_t end = 0;
  bool is_closed = false;  ///< by an operator, or by a side that ends where it began
  bool has_ends = false;   ///< no operator of the path closes it; that which paints it can
};

/// A path under construction. It takes places with a fixed number of decimals, rounded or not.
class path {
 public:
  /// Forgets all and begins with the given instruction, which is a path's first.
  void begin(const instruction& first, int digits, bool may_round);
  /// Goes on with an instruction of a path.
  void add(const instruction& step);
  /// Ends at the operator that paints it. Subpaths of a single point that nothing closes go: no
  /// operator draws them.
  void end();

  [[nodiscard]] std::span<const place> corners() const { return corners_; }
  [[nodiscard]] std::span<const place> corners_of(const subpath& part) const {
    return std::span(corners_).subspan(part.begin, part.end - part.begin);
  }
  [[nodiscard]] std::span<const subpath> subpaths() const { return subpaths_; }
  [[nodiscard]] std::size_t source_begin() const { return source_begin_; }
  [[nodiscard]] std::size_t source_end() const { return source_end_; }
  /// Curves are kept as their control points, whose hull holds them.
  [[nodiscard]] bool has_curves() const { return has_curves_; }
  /// It ended with a point that went. An operator that closes the path would have meant that point.
  [[nodiscard]] bool ended_with_point() const { return ended_with_point_; }
  /// It is a barrier whatever paints it: it clips, or a number is out of range or has more decimals
  /// than it may, or a comment stands in it.
  [[nodiscard]] bool is_odd() const { return is_odd_; }
  /// Whether each subpath closes itself.
  [[nodiscard]] bool is_closed() const;

 private:
  void move_to(const place& to);
  void finish_subpath();
  bool take(const operand& x, const operand& y);
  void add_rectangle(std::span<const operand> operands);

  std::vector<place> corners_;
  std::vector<subpath> subpaths_;
  place start_;
  int digits_ = 0;
  bool may_round_ = true;
  std::uint32_t open_ = 0;     // where the subpath under way begins
  bool is_under_way_ = false;  // else the next side begins one at start_
  bool has_curves_ = false;
  bool ended_with_point_ = false;
  bool is_odd_ = false;
  std::size_t source_begin_ = 0;
  std::size_t source_end_ = 0;
};

}  // namespace trellion::pdf
