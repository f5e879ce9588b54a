#include "walk.h"

#include <algorithm>
#include <cstdint>

#include "string_utils.h"

namespace trellion {
namespace {

/// A run of polygons and the token that broke it.
struct polygon_run {
  std::int64_t polygons = 0;
  token_list end;             ///< behind the last complete polygon
  token_list behind_breaker;  ///< behind the token that broke the run, or at the end of the list
  bool broken_by_operator = false;
};

/// Recognises consecutive polygons of exactly one form.
class run_matcher {
 public:
  explicit run_matcher(const drawing_token_set& operators) : operators_(operators) {}

  /// Matches as many polygons as stand at the head of a list.
  polygon_run match(token_list list);

 private:
  enum class state { x, y, moveto, vertex_or_end, vertex_y, lineto, trailing, last_trailing };

  bool accepts(const token& t, const token_list& behind);
  bool go(state next) {
    state_ = next;
    return true;
  }
  bool go_if(bool condition, state next) { return condition && go(next); }
  bool accepts_end_polygon(const token_list& behind);
  bool accepts_trailing(const token& t, const token_list& behind);
  bool accepts_last_trailing(const token& t, const token_list& behind);
  bool complete_polygon(const token_list& behind);
  [[nodiscard]] bool last_trailing_varies() const {
    return operators_.trailing_operators.back().kind == token_kind::varying;
  }
  [[nodiscard]] bool is_operator(const token& t) const;

  const drawing_token_set& operators_;
  state state_ = state::x;
  std::size_t expected_trailing_ = 0;
  polygon_run run_;
};

polygon_run run_matcher::match(token_list list) {
  run_ = {};
  state_ = state::x;
  while (!list.empty()) {
    const token t = list.take_head();
    if (!accepts(t, list)) {
      run_.behind_breaker = list;
      run_.broken_by_operator = is_operator(t);
      return run_;
    }
  }
  // The list ends where the last trailing operator could still follow: the polygon counts.
  if (state_ == state::last_trailing && last_trailing_varies()) ++run_.polygons;
  run_.behind_breaker = list;
  return run_;
}

/// False when the token breaks the run. `behind` begins after the token.
bool run_matcher::accepts(const token& t, const token_list& behind) {
  switch (state_) {
    case state::x: return go_if(t.is_number(), state::y);
    case state::y: return go_if(t.is_number(), state::moveto);
    case state::moveto: return go_if(tok_eq_tok(t, operators_.moveto_token), state::vertex_or_end);
    case state::vertex_or_end:
      if (t.is_number()) return go(state::vertex_y);
      return tok_eq_tok(t, operators_.end_polygon_token) && accepts_end_polygon(behind);
    case state::vertex_y: return go_if(t.is_number(), state::lineto);
    case state::lineto: return go_if(tok_eq_tok(t, operators_.lineto_token), state::vertex_or_end);
    case state::trailing: return accepts_trailing(t, behind);
    case state::last_trailing: return accepts_last_trailing(t, behind);
  }
  return false;
}

bool run_matcher::accepts_end_polygon(const token_list& behind) {
  expected_trailing_ = 0;
  switch (operators_.trailing_operators.size()) {
    case 0: return complete_polygon(behind);
    // Kept as it is: with a single, varying trailing operator that is missing, the polygon counts
    // but its end is not recorded. The group then ends one polygon early, and the polygon is
    // looked at again as the start of the next run.
    case 1: return go(state::last_trailing);
    default: return go(state::trailing);
  }
}

bool run_matcher::accepts_trailing(const token& t, const token_list& behind) {
  const auto& trailing = operators_.trailing_operators;
  if (tok_neq_tok(t, trailing[expected_trailing_])) return false;
  ++expected_trailing_;
  if (expected_trailing_ + 1 < trailing.size()) return true;
  if (last_trailing_varies()) run_.end = behind;
  return go(state::last_trailing);
}

/// A last operator that varies may be missing: the polygon counts, and the run ends there.
bool run_matcher::accepts_last_trailing(const token& t, const token_list& behind) {
  if (equal_blank_padded(t.text, operators_.trailing_operators.back().text)) {
    return complete_polygon(behind);
  }
  if (last_trailing_varies()) ++run_.polygons;
  return false;
}

bool run_matcher::complete_polygon(const token_list& behind) {
  ++run_.polygons;
  run_.end = behind;
  return go(state::x);
}

bool run_matcher::is_operator(const token& t) const {
  const auto equals = [&t](const token& op) { return tok_eq_tok(t, op); };
  return equals(operators_.moveto_token) || equals(operators_.lineto_token) ||
         equals(operators_.end_polygon_token) ||
         std::any_of(operators_.trailing_operators.begin(), operators_.trailing_operators.end(),
                     equals);
}

}  // namespace

void walk(token_list list, const drawing_token_set& operators, text_writer& out,
          const group_handler& handle_group) {
  run_matcher matcher(operators);
  while (!list.empty()) {
    const polygon_run run = matcher.match(list);
    if (run.polygons >= 2) {
      handle_group({list, run.end});
      list = run.end;
    } else if (run.broken_by_operator) {
      // The operator may itself belong to a polygon that starts between the head and it.
      write_token(list.take_head(), out);
    } else {
      purge({list, run.behind_breaker}, out);
      list = run.behind_breaker;
    }
  }
}

}  // namespace trellion
