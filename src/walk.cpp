#include "walk.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace trellion {
namespace {

/// Reads consecutive polygons of exactly one form, up to the token that breaks the run, and gathers
/// their vertices in a group.
class run_matcher {
 public:
  run_matcher(const token_list& list, const drawing_token_set& operators, polygon_group& group)
      : operators_(operators), group_(group), tokens_(list) {
    group_.begin = list;
    group_.end = list;
    // Much more than is needed does not cost memory that is not used; growing would be copying.
    if (group_.vertices.capacity() == 0) group_.vertices.reserve(list.n_bytes() / 12);
    group_.vertices.clear();
    group_.n_vertices.clear();
  }

  /// Returns the number of polygons read. That of the group can be one less.
  std::int64_t read();

  /// After the token that broke the run, or the end of the list.
  [[nodiscard]] const token_list& after_breaker() const { return tokens_.rest(); }
  /// The token that broke the run, unless the list ended there.
  [[nodiscard]] const token* breaker() const {
    return tokens_.at_end() ? nullptr : &tokens_.last();
  }

 private:
  bool read_polygon();
  bool read_vertex(const token& op);
  bool read_trailing();
  bool read_last_trailing();
  void end_group_here();

  const drawing_token_set& operators_;
  polygon_group& group_;
  token_matcher tokens_;
  std::int64_t polygons_ = 0;
  std::size_t n_vertices_ = 0;  // of the group: up to its end
  std::size_t n_polygons_ = 0;
};

std::int64_t run_matcher::read() {
  while (tokens_.next_is_number() && read_polygon()) ++polygons_;
  group_.vertices.resize(n_vertices_);
  group_.n_vertices.resize(n_polygons_);
  return polygons_;
}

/// Reads a polygon after its first number.
bool run_matcher::read_polygon() {
  const std::size_t first = group_.vertices.size();
  if (!read_vertex(operators_.moveto_token)) return false;
  while (tokens_.next_is_number()) {
    if (!read_vertex(operators_.lineto_token)) return false;
  }
  if (tokens_.at_end() || tok_neq_tok(tokens_.last(), operators_.end_polygon_token)) return false;
  group_.n_vertices.push_back(static_cast<std::uint32_t>(group_.vertices.size() - first));
  return read_trailing();
}

/// Reads a vertex after its first number.
bool run_matcher::read_vertex(const token& op) {
  const char* const x = tokens_.last().text.data();
  if (!tokens_.next_is_number()) return false;
  group_.vertices.push_back({x, tokens_.last().text.data()});
  return tokens_.next_is(op);
}

/// Reads the operators after the end of a polygon. False when the run is broken.
bool run_matcher::read_trailing() {
  const std::vector<token>& trailing = operators_.trailing_operators;
  for (std::size_t i = 0; i + 1 < trailing.size(); ++i) {
    if (!tokens_.next_is(trailing[i])) return false;
  }
  if (!trailing.empty() && !read_last_trailing()) return false;
  end_group_here();
  return true;
}

/// A last operator that varies may be missing: the polygon counts, and the run ends there.
bool run_matcher::read_last_trailing() {
  const token& expected = operators_.trailing_operators.back();
  const bool varies = expected.kind == token_kind::varying;
  // Kept as it is: when the only trailing operator varies, the end before it is not recorded. The
  // group then ends one polygon early, and that polygon is looked at again as the start of a run.
  if (varies && operators_.trailing_operators.size() > 1) end_group_here();
  if (tokens_.next() && same_text(tokens_.last().text, expected.text)) return true;
  if (varies) ++polygons_;
  return false;
}

void run_matcher::end_group_here() {
  group_.end = tokens_.rest();
  n_vertices_ = group_.vertices.size();
  n_polygons_ = group_.n_vertices.size();
  group_.last_line = tokens_.last().line_number;
}

/// The texts of the operators, sorted. One that varies is no operator to look for.
std::vector<std::string_view> operator_texts(const drawing_token_set& operators) {
  std::vector<std::string_view> texts = {operators.moveto_token.text, operators.lineto_token.text,
                                         operators.end_polygon_token.text};
  for (const token& t : operators.trailing_operators) {
    if (t.is_string()) texts.push_back(t.text);
  }
  std::ranges::sort(texts);
  return texts;
}

}  // namespace

void walk(token_list list, const drawing_token_set& operators, text_writer& out,
          const group_handler& handle_group) {
  const std::vector<std::string_view> texts = operator_texts(operators);
  const auto is_operator = [&texts](const token& t) {
    return t.is_string() && std::ranges::binary_search(texts, t.text);
  };
  polygon_group group;
  while (!list.empty()) {
    token_list rest = list;
    const token head = rest.take_head();
    if (!head.is_number()) {  // no polygon starts here, and none can be broken
      write_token(head, out);
      list = rest;
      continue;
    }
    run_matcher run(list, operators, group);
    if (run.read() >= 2) {
      const token_list after = group.end;
      handle_group(group);
      list = after;
    } else if (run.breaker() != nullptr && is_operator(*run.breaker())) {
      // The operator may itself belong to a polygon that starts between the head and it.
      write_token(head, out);
      list = rest;
    } else {
      purge({list, run.after_breaker()}, out);
      list = run.after_breaker();
    }
  }
}

}  // namespace trellion
