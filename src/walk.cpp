#include "walk.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "token_cursor.h"

namespace trellion {
namespace {

/// Reads consecutive polygons of exactly one form, up to the token that breaks the run, and gathers
/// their vertices in a group.
class run_matcher {
 public:
  /// `plain` has the operators' texts, unless one of them varies.
  run_matcher(const token_list& list, const drawing_token_set& operators,
              const std::optional<plain_operators>& plain, polygon_group& group,
              kept_polygons* kept)
      : operators_(operators), plain_(plain), group_(group), kept_(kept), tokens_(list) {
    group_.begin = list;
    group_.end = list;
    group_.clear();
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
  void read_plain();
  bool take_over_kept();
  bool read_polygon();
  bool read_vertex(const token& op);
  bool read_trailing();
  bool read_last_trailing();
  void end_group_here();

  const drawing_token_set& operators_;
  const std::optional<plain_operators>& plain_;
  polygon_group& group_;
  kept_polygons* kept_;  // if there are any
  token_matcher tokens_;
  std::int64_t polygons_ = 0;
  std::size_t n_vertices_ = 0;  // of the group: up to its end
  std::size_t n_polygons_ = 0;
};

std::int64_t run_matcher::read() {
  read_plain();
  while (tokens_.next_is_number() && read_polygon()) {
    ++polygons_;
    read_plain();
  }
  group_.vertices.resize(n_vertices_);
  group_.n_vertices.resize(n_polygons_);
  return polygons_;
}

void run_matcher::read_plain() {
  if (!plain_) return;
  const char* const stop = kept_ != nullptr ? kept_->first_vertex() : nullptr;
  do {
    polygon_sink sink{group_, group_.begin.text_end(), 1, stop};
    const std::int64_t n_polygons = read_plain_polygons(tokens_, *plain_, sink);
    sink.drop_unended();
    if (n_polygons == 0) continue;
    polygons_ += n_polygons;
    end_group_here();
  } while (take_over_kept());
}

/// Takes over what the scan has kept, if that begins here. The group must have just those polygons
/// that there is room for before it; else it is given up, as its memory would stay to the end.
bool run_matcher::take_over_kept() {
  if (kept_ == nullptr || kept_->n_polygons == 0) return false;
  if (!kept_->begin.same_head(tokens_.rest())) return false;
  if (kept_->n_polygons_before != group_.n_vertices.size() ||
      kept_->n_vertices_before != group_.vertices.size()) {
    *kept_ = {};
    return false;
  }
  polygon_list& list = kept_->list;
  std::ranges::copy(group_.vertices, list.vertices.begin());
  std::ranges::copy(group_.n_vertices, list.n_vertices.begin());
  list.first_fault = std::min(list.first_fault, group_.first_fault);
  static_cast<polygon_list&>(group_) = std::move(list);
  tokens_.pass_to(kept_->last_token, kept_->n_tokens);
  polygons_ += std::exchange(kept_->n_polygons, 0);
  end_group_here();
  return true;
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
  const char* const y = tokens_.last().text.data();
  if (!tokens_.next_is(op)) return false;
  group_.add_vertex(x, y, group_.begin.text_end());
  return true;
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

std::optional<plain_operators> plain_operators_of(const drawing_token_set& operators) {
  plain_operators plain{operator_text(operators.moveto_token.text),
                        operator_text(operators.lineto_token.text),
                        operator_text(operators.end_polygon_token.text),
                        {}};
  for (const token& t : operators.trailing_operators) {
    if (t.kind == token_kind::varying) return std::nullopt;
    plain.trailing.emplace_back(t.text);
  }
  return plain;
}

/// Where the next run could start, two numbers and a moveto, or earlier. Every token before would
/// be written: a run tried there would be broken by its third token at the latest. When that is a
/// number too it is written with the two before it, so numbers are counted in threes; after another
/// token no number is left that it could belong to.
token_list next_possible_run(const token_list& list, const operator_text& moveto) {
  token_cursor cursor(list);
  token_cursor::place start = cursor.here();
  while (cursor.next_number()) {
    start = cursor.here();
    if (!cursor.next()) return cursor.list_from(start);
    if (!cursor.is_number()) continue;
    if (!cursor.next()) return cursor.list_from(start);
    if (!cursor.is_number() && cursor.is(moveto)) return cursor.list_from(start);
  }
  // A number here is the third of its three.
  return cursor.list_from(cursor.is_number() ? start : cursor.here());
}

}  // namespace

void walk(token_list list, const drawing_token_set& operators, text_writer& out,
          const group_handler& handle_group, kept_polygons* kept) {
  const std::vector<std::string_view> texts = operator_texts(operators);
  const auto is_operator = [&texts](const token& t) {
    return t.is_string() && std::ranges::binary_search(texts, t.text);
  };
  const operator_text moveto(operators.moveto_token.text);
  const std::optional<plain_operators> plain = plain_operators_of(operators);
  polygon_group group;
  token_list unwritten = list;  // what lies between it and the list is to be written
  while (!list.empty()) {
    list = next_possible_run(list, moveto);
    token_list rest = list;
    const token head = rest.take_head();
    if (!head.is_number()) {  // no polygon starts here, and none can be broken
      list = rest;
      continue;
    }
    run_matcher run(list, operators, plain, group, kept);
    if (run.read() >= 2) {
      purge({unwritten, list}, out);
      unwritten = group.end;
      list = group.end;
      handle_group(group);
    } else if (run.breaker() != nullptr && is_operator(*run.breaker())) {
      // The operator may itself belong to a polygon that starts between the head and it.
      list = rest;
    } else {
      list = run.after_breaker();
    }
  }
  purge({unwritten, list}, out);
}

}  // namespace trellion
