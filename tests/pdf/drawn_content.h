#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "pdf/content_repair.h"
#include "pdf/mesh.h"

namespace trellion::pdf::testing {

/// A content that nobody can tell from outside what it shows.
struct not_understood {};

/// What a content stream shows, at each place of a raster near the origin: written against the
/// rules of content streams, with nothing of the repair in it. Places are exact. Pens are round;
/// those with dashes or wide mitres leave gaps, other ones for each path. Paints that are not
/// opaque change what is below; operators that neither paint paths nor set states change all
/// places, with all of the state, so that a state or an order that is lost shows.
class drawn_content {
 public:
  /// Looks away from places so near an edge that rounding may take it across them, and with
  /// closing::stroke from all strokes. Throws not_understood.
  drawn_content(std::string_view content, const content_surroundings& surroundings,
                const content_settings& settings);

  /// What differs, and where; empty when both show the same.
  [[nodiscard]] std::string difference(const drawn_content& other) const;

 private:
  struct outline {
    std::vector<place> corners;
    bool is_closed = false;
  };
  struct state {
    std::map<std::string, std::string> values;  // by operator, or key of a parameter dictionary
    std::array<double, 6> matrix = {1, 0, 0, 1, 0, 0};
    std::vector<bool> shown;  // by the clip
  };
  /// What of a path is painted.
  struct region {
    bool fills = false;
    bool is_even_odd = false;
    double half = 0;         ///< of the pen's width, if one draws
    std::uint64_t gaps = 0;  ///< the pen leaves places out; which, this decides
  };
  enum class covering : std::uint8_t { no, yes, unsure };

  void begin_state(bool is_known);
  void perform(const std::string& name);
  bool add_to_path(const std::string& name);
  void add_curve(const std::string& name);
  bool set_state(const std::string& name);
  void set_colour(const std::string& key, const std::string& space);
  void set_space(const std::string& key, const std::string& space);
  void set_parameters(const std::string& name);
  void concatenate();
  void set_points();

  void paint_path(const std::string& name);
  [[nodiscard]] std::string corners() const;
  void clip();
  [[nodiscard]] bool is_inside(const place& at, bool is_even_odd) const;
  [[nodiscard]] covering covers(const place& at, const region& by) const;
  void paint(const std::string& colour, const char* alpha, const region& by);
  void show_all(const std::string& name);

  [[nodiscard]] const std::string& operand(std::size_t index) const;
  [[nodiscard]] std::string operands() const;
  [[nodiscard]] place place_at(std::size_t index) const;

  const content_surroundings& surroundings_;
  const content_settings& settings_;
  std::vector<std::string> operands_;
  std::vector<outline> path_;
  std::string clip_rule_;
  state now_;
  std::vector<state> saved_;

  std::vector<place> points_;  // of the raster, in user space
  double slack_ = 0;           // by which an edge may be moved there
  double thin_ = 0;            // half of what the thinnest line is wide there

  struct sample {
    std::uint64_t key = 0;  ///< the same where the same is seen
    std::size_t name = 0;   ///< of what came last
  };
  std::vector<sample> seen_;
  std::vector<bool> unsure_;
  std::vector<std::string> names_ = {"nothing"};
};

}  // namespace trellion::pdf::testing
