#include "setup.h"

#include <unordered_map>

#include "fields.h"
#include "param.h"
#include "string_utils.h"

namespace trellion {
namespace {

constexpr std::string_view macro_body =
    " {closepath gsave 0 setlinewidth stroke grestore fill} bind def";

bool same_text(const token& a, const token& b) { return equal_blank_padded(a.text, b.text); }

/// Matches one run of polygons, token by token. The first polygon names the operators: two or more
/// numbers, moveto, then pairs of numbers with lineto, end polygon and trailing operators. Every
/// further polygon must repeat them, with exactly two numbers at its start.
class run_pattern {
 public:
  explicit run_pattern(std::int32_t min_separators) : min_separators_(min_separators) {}

  /// Makes ready for another run.
  void restart();
  /// Takes the next token. False ends the run: the token does not belong to it.
  bool accepts(const token& t);
  /// True when the token just accepted completed a polygon after the first one, or all of it but a
  /// last trailing operator that may vary.
  [[nodiscard]] bool at_polygon_end() const { return at_polygon_end_; }

  [[nodiscard]] std::int64_t polygons() const { return polygons_; }
  drawing_token_set set;  ///< the operators; token_count reaches to the last polygon end

 private:
  enum class state {
    // The first polygon: up to its first lineto, its further vertices, its trailing operators.
    first_x,
    first_y,
    first_moveto,
    second_x,
    second_y,
    first_lineto,
    first_vertex_or_end,
    first_vertex_y,
    first_vertex_lineto,
    separators,
    // Every further polygon.
    next_x,
    next_y,
    next_moveto,
    vertex_x,
    vertex_y,
    vertex_lineto,
    vertex_or_end,
    trailing,
    last_trailing
  };

  bool go(state next) {
    state_ = next;
    return true;
  }
  bool go_if(bool condition, state next) { return condition && go(next); }
  bool accepts_first_vertex_or_end(const token& t);
  bool accepts_separator(const token& t);
  bool accepts_vertex_or_end(const token& t);
  bool accepts_trailing(const token& t);
  bool accepts_last_trailing(const token& t);
  void record_polygon_end() {
    at_polygon_end_ = true;
    set.token_count = tokens_;
  }

  std::int32_t min_separators_;
  state state_ = state::first_x;
  std::int64_t tokens_ = 0;
  std::int64_t polygons_ = 0;
  std::size_t expected_trailing_ = 0;
  bool at_polygon_end_ = false;
};

void run_pattern::restart() {
  set.token_count = 0;
  set.trailing_operators.clear();
  state_ = state::first_x;
  tokens_ = 0;
  polygons_ = 0;
}

bool run_pattern::accepts(const token& t) {
  ++tokens_;
  at_polygon_end_ = false;
  switch (state_) {
    case state::first_x: return go_if(t.is_number(), state::first_y);
    case state::first_y: return go_if(t.is_number(), state::first_moveto);
    case state::first_moveto:
      if (t.is_number()) return true;  // any number of numbers may stand before the first polygon
      set.moveto_token = t;
      return go_if(t.is_string(), state::second_x);
    case state::second_x: return go_if(t.is_number(), state::second_y);
    case state::second_y: return go_if(t.is_number(), state::first_lineto);
    case state::first_lineto:
      set.lineto_token = t;
      return go_if(t.is_string() && !same_text(t, set.moveto_token), state::first_vertex_or_end);
    case state::first_vertex_or_end: return accepts_first_vertex_or_end(t);
    case state::first_vertex_y: return go_if(t.is_number(), state::first_vertex_lineto);
    case state::first_vertex_lineto:
      return go_if(tok_eq_tok(t, set.lineto_token), state::first_vertex_or_end);
    case state::separators: return accepts_separator(t);
    case state::next_x: return go_if(t.is_number(), state::next_y);
    case state::next_y: return go_if(t.is_number(), state::next_moveto);
    case state::next_moveto: return go_if(tok_eq_tok(t, set.moveto_token), state::vertex_x);
    case state::vertex_x: return go_if(t.is_number(), state::vertex_y);
    case state::vertex_y: return go_if(t.is_number(), state::vertex_lineto);
    case state::vertex_lineto: return go_if(tok_eq_tok(t, set.lineto_token), state::vertex_or_end);
    case state::vertex_or_end: return accepts_vertex_or_end(t);
    case state::trailing: return accepts_trailing(t);
    case state::last_trailing: return accepts_last_trailing(t);
  }
  return false;
}

bool run_pattern::accepts_first_vertex_or_end(const token& t) {
  if (t.is_number()) return go(state::first_vertex_y);
  if (!t.is_string() || same_text(t, set.moveto_token) || same_text(t, set.lineto_token)) {
    return false;
  }
  set.end_polygon_token = t;
  return go(state::separators);
}

bool run_pattern::accepts_separator(const token& t) {
  if (t.is_number()) {
    const auto separators = static_cast<std::int64_t>(1 + set.trailing_operators.size());
    if (min_separators_ > separators) return false;
    polygons_ = 1;
    return go(state::next_y);
  }
  if (!t.is_string() || same_text(t, set.moveto_token) || same_text(t, set.lineto_token) ||
      same_text(t, set.end_polygon_token)) {
    return false;
  }
  set.trailing_operators.push_back(t);
  return true;
}

bool run_pattern::accepts_vertex_or_end(const token& t) {
  if (t.is_number()) return go(state::vertex_y);
  if (tok_neq_tok(t, set.end_polygon_token)) return false;
  expected_trailing_ = 0;
  const std::size_t trailing = set.trailing_operators.size();
  if (trailing > 1) return go(state::trailing);
  record_polygon_end();
  if (trailing == 1) return go(state::last_trailing);
  ++polygons_;
  return go(state::next_x);
}

bool run_pattern::accepts_trailing(const token& t) {
  if (tok_neq_tok(t, set.trailing_operators[expected_trailing_])) return false;
  ++expected_trailing_;
  if (expected_trailing_ + 1 < set.trailing_operators.size()) return true;
  record_polygon_end();
  return go(state::last_trailing);
}

/// The last trailing operator may differ from polygon to polygon (a level's colour name, say): the
/// polygon counts all the same, and the operator is marked so that it matches no token any more.
bool run_pattern::accepts_last_trailing(const token& t) {
  ++polygons_;
  if (!same_text(t, set.trailing_operators.back())) {
    set.trailing_operators.back().kind = token_kind::varying;
    return false;
  }
  record_polygon_end();
  return go(state::next_x);
}

/// A text that two sets share exactly when their operators are equal. Token texts hold no blank,
/// and only trailing operators can be of another kind than string.
std::string signature(const drawing_token_set& set) {
  std::string text;
  for (const token* t : {&set.moveto_token, &set.lineto_token, &set.end_polygon_token}) {
    text.append(t->text) += ' ';
  }
  for (const token& t : set.trailing_operators) {
    text.append(t.text).append(t.kind == token_kind::varying ? "  " : " ");
  }
  return text;
}

/// How the text after an occurrence of the macro's name compares with the macro's definition.
/// `rest` moves behind the tokens that match.
bool definition_follows(token_list& rest) {
  for (token_list body(macro_body); !body.empty();) {
    if (rest.empty() || tok_neq_tok(rest.take_head(), body.take_head())) return false;
  }
  return true;
}

/// True when the name is used for the macro's definition at most. Sets `existing` to the first
/// place that holds it.
bool is_safe_name(std::string_view name, token_list rest, std::optional<token_list>& existing,
                  bool verbose, text_writer& console) {
  while (!rest.empty()) {
    const token_list here = rest;
    const token t = rest.take_head();
    if (!t.is_string() || t.text != name) continue;

    if (verbose) console.put("pgf macro ").put(name).put(" detected ...");
    const bool native = definition_follows(rest);
    if (verbose) console.put(native ? " native" : " foreign").put(nl);
    if (!native) return false;
    if (!existing) existing = here;
  }
  return true;
}

}  // namespace

drawing_token_set drawing_token_scan(const token_list& list, std::int32_t min_separators,
                                     bool verbose, text_writer& console) {
  console.put("Looking for polygon drawing operators...").put(nl).flush();
  if (verbose) console.put("Possible drawing token sets:").put(nl);

  std::unordered_map<std::string, drawing_token_set> candidates;
  const drawing_token_set* best = nullptr;
  run_pattern pattern(min_separators);
  token_list start = list;
  while (!start.empty()) {
    pattern.restart();
    token_list rest = start;
    token_list resume;
    while (!rest.empty() && pattern.accepts(rest.take_head())) {
      if (pattern.at_polygon_end()) resume = rest;
    }

    if (pattern.polygons() < 2) {
      // Any later start in the same stretch of numbers would meet the same tokens and fail like
      // this one, and the last number alone cannot start a polygon: go behind the stretch.
      while (!start.empty() && start.take_head().is_number()) {
      }
      continue;
    }

    if (verbose) display_dts(pattern.set, true, console);
    const auto [found, added] = candidates.try_emplace(signature(pattern.set), pattern.set);
    drawing_token_set& candidate = found->second;
    if (!added) candidate.token_count += pattern.set.token_count;
    if (best == nullptr || candidate.token_count > best->token_count) best = &candidate;
    start = resume;
  }

  if (best == nullptr) {
    console.put("trellion: fatal error --- no drawing operators detected.").put(nl);
    throw early_end{};
  }
  display_dts(*best, false, console);
  return *best;
}

void display_dts(const drawing_token_set& set, bool compact, text_writer& console) {
  const char* const labels[] = {"  moveto      : ", "\n  lineto      : ", "\n  end polygon : "};
  const char* const gaps[] = {"  ", " ", " "};
  const auto& leads = compact ? gaps : labels;
  console.put(leads[0]).put(set.moveto_token.text);
  console.put(leads[1]).put(set.lineto_token.text);
  console.put(leads[2]).put(set.end_polygon_token.text);
  for (const token& t : set.trailing_operators) console.put("  ").put(t.text);

  const std::string count = integer_field(set.token_count, 10);
  console.put(" [").put(std::string_view(count).substr(count.find_first_not_of(' ')));
  console.put(" associated tokens]").put(nl);
}

fill_macro pgf_setup(const token_list& list, bool verbose, text_writer& console) {
  constexpr int max_attempts = 100;
  console.put("Attempting to set stroke/fill macro").put(nl);

  fill_macro macro{"/pgf", std::nullopt};
  for (int attempt = 1; attempt <= max_attempts; ++attempt) {
    if (is_safe_name(macro.name, list, macro.existing_definition, verbose, console)) {
      console.put("Safe pgf macro is ").put(macro.name);
      if (macro.existing_definition) console.put(" (already defined in file)");
      console.put(nl);
      return macro;
    }
    macro.existing_definition.reset();
    macro.name += 'x';
  }

  console.put("trelion: fatal error --- unable to determine a safe pgf command.").put(nl);
  console.put("Last attempt was : ").put(macro.name).put(nl);
  throw early_end{};
}

void write_definition(const fill_macro& macro, text_writer& out) {
  out.put(macro.name).put(macro_body).put(nl);
}

}  // namespace trellion
