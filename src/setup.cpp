#include "setup.h"

#include <map>

#include "fields.h"
#include "param.h"
#include "token_cursor.h"

namespace trellion {
namespace {

constexpr std::string_view macro_body =
    " {closepath gsave 0 setlinewidth stroke grestore fill} bind def";

/// Counts plain polygons. They have at least two vertices.
struct counting_sink {
  static void vertex(number_text /*x*/, number_text /*y*/) {}
  static bool end_polygon(std::uint32_t n_vertices) { return n_vertices >= 2; }
};

/// Reads one run of polygons. The first polygon names the operators: two or more numbers, moveto,
/// then pairs of numbers with lineto, end polygon and trailing operators. Every further polygon
/// must repeat them, with exactly two numbers at its start.
class run_pattern {
 public:
  /// Keeps its first plain polygons, if `kept` is given and has none.
  run_pattern(const token_list& list, std::int32_t min_separators, kept_polygons* kept)
      : tokens_(list), min_separators_(min_separators), kept_(kept) {}

  /// Reads as far as the pattern goes and returns the number of polygons read.
  std::int64_t read();

  drawing_token_set set;     ///< the operators; token_count reaches to `resume`
  token_list resume;         ///< after the last polygon, or its last operator that did not vary
  token_list after_numbers;  ///< after the first token that is no number

 private:
  bool read_first_polygon();
  [[nodiscard]] bool may_repeat() const;
  bool read_separators();
  bool read_further_polygon();
  bool read_trailing();
  void read_plain();
  std::int64_t keep_plain(const plain_operators& operators);

  bool read_vertex() {
    return tokens_.next_is_number() && tokens_.next_is_number() &&
           tokens_.next_is(set.lineto_token);
  }
  [[nodiscard]] bool last_differs_from(const token& op) const {
    return !same_text(tokens_.last().text, op.text);
  }
  void record_end() {
    resume = tokens_.rest();
    set.token_count = tokens_.count();
  }

  token_matcher tokens_;
  std::int32_t min_separators_;
  kept_polygons* kept_;
  std::int64_t n_leading_ = 0;  // numbers before those of the first polygon
  std::int64_t polygons_ = 0;
};

std::int64_t run_pattern::read() {
  if (!read_first_polygon() || !may_repeat() || !read_separators()) return 0;
  // The x of the next polygon is read already: it is what ended the separators.
  polygons_ = 1;
  while (read_further_polygon()) {
    read_plain();
    if (!tokens_.next_is_number()) break;
  }
  return polygons_;
}

bool run_pattern::read_first_polygon() {
  // Any number of numbers may stand before the first polygon.
  while (tokens_.next_is_number()) {
    if (tokens_.count() > 2) pass_numbers(tokens_);
  }
  after_numbers = tokens_.rest();
  if (tokens_.count() < 3 || tokens_.at_end() || !tokens_.last().is_string()) return false;
  set.moveto_token = tokens_.last();
  n_leading_ = tokens_.count() - 3;

  if (!tokens_.next_is_number() || !tokens_.next_is_number() || !tokens_.next()) return false;
  if (!tokens_.last().is_string() || !last_differs_from(set.moveto_token)) return false;
  set.lineto_token = tokens_.last();

  constexpr int few = 16;
  for (int n_vertices = 0; tokens_.next_is_number(); ++n_vertices) {
    if (!tokens_.next_is_number() || !tokens_.next_is(set.lineto_token)) return false;
    if (n_vertices == few) pass_vertices(tokens_, operator_text(set.lineto_token.text));
  }
  set.end_polygon_token = tokens_.last();
  return !tokens_.at_end() && tokens_.last().is_string() && last_differs_from(set.moveto_token) &&
         last_differs_from(set.lineto_token);
}

/// False when the next number cannot be the x of a further polygon, which saves gathering the
/// operators before it.
bool run_pattern::may_repeat() const {
  token_cursor cursor(tokens_.rest());
  if (!cursor.next_number() || !cursor.next()) return true;
  if (!cursor.is_number()) return false;
  return !cursor.next() || cursor.is(operator_text(set.moveto_token.text));
}

/// The trailing operators, up to the first number of the next polygon.
bool run_pattern::read_separators() {
  while (tokens_.next() && tokens_.last().is_string()) {
    if (!last_differs_from(set.moveto_token) || !last_differs_from(set.lineto_token) ||
        !last_differs_from(set.end_polygon_token)) {
      return false;
    }
    set.trailing_operators.push_back(tokens_.last());
  }
  const auto separators = static_cast<std::int64_t>(1 + set.trailing_operators.size());
  return !tokens_.at_end() && tokens_.last().is_number() && separators >= min_separators_;
}

/// A polygon after its first number.
bool run_pattern::read_further_polygon() {
  if (!tokens_.next_is_number() || !tokens_.next_is(set.moveto_token) || !read_vertex()) {
    return false;
  }
  while (tokens_.next_is_number()) {
    if (!tokens_.next_is_number() || !tokens_.next_is(set.lineto_token)) return false;
  }
  if (tokens_.at_end() || tok_neq_tok(tokens_.last(), set.end_polygon_token)) return false;
  return read_trailing();
}

/// The last trailing operator may differ from polygon to polygon (a level's colour name, say): the
/// polygon counts all the same, and the operator is marked so that it matches no token any more.
bool run_pattern::read_trailing() {
  std::vector<token>& trailing = set.trailing_operators;
  if (trailing.empty()) {
    record_end();
    ++polygons_;
    return true;
  }
  for (std::size_t i = 0; i + 1 < trailing.size(); ++i) {
    if (!tokens_.next_is(trailing[i])) return false;
  }
  record_end();
  if (!tokens_.next()) return false;
  ++polygons_;
  if (last_differs_from(trailing.back())) {
    trailing.back().kind = token_kind::varying;
    return false;
  }
  record_end();
  return true;
}

void run_pattern::read_plain() {
  plain_operators operators{operator_text(set.moveto_token.text),
                            operator_text(set.lineto_token.text),
                            operator_text(set.end_polygon_token.text),
                            {}};
  for (const token& t : set.trailing_operators) operators.trailing.emplace_back(t.text);
  std::int64_t n_polygons = 0;
  if (kept_ != nullptr && kept_->n_polygons == 0) {
    n_polygons = keep_plain(operators);
    kept_ = nullptr;  // once in a run: what does not begin plainly is often odd throughout
  } else {
    counting_sink sink;
    n_polygons = read_plain_polygons(tokens_, operators, sink);
  }
  if (n_polygons == 0) return;
  polygons_ += n_polygons;
  record_end();
}

std::int64_t run_pattern::keep_plain(const plain_operators& operators) {
  // All other tokens up to here are numbers of vertices and the operators behind them.
  const std::int64_t n_ends = polygons_ * static_cast<std::int64_t>(1 + operators.trailing.size());
  const std::int64_t n_tokens = tokens_.count();
  kept_->begin = tokens_.rest();
  kept_->n_polygons_before = static_cast<std::size_t>(polygons_);
  kept_->n_vertices_before = static_cast<std::size_t>((n_tokens - n_leading_ - n_ends) / 3);
  kept_->list.clear();
  kept_->list.vertices.resize(kept_->n_vertices_before);
  kept_->list.n_vertices.resize(kept_->n_polygons_before);
  polygon_sink sink{kept_->list, tokens_.rest().text_end(), 2, nullptr};
  kept_->n_polygons = read_plain_polygons(tokens_, operators, sink);
  sink.drop_unended();
  kept_->n_tokens = tokens_.count() - n_tokens;
  const std::int64_t n_polygons = kept_->n_polygons;
  if (n_polygons > 0) {
    kept_->last_token = kept_->begin.from(tokens_.last().text.data(), tokens_.last().line_number);
  }
  return n_polygons;
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

/// Where the next run could start, or earlier: two or more numbers, another token, two numbers
/// and another token.
token_list next_possible_run(const token_list& list) {
  token_cursor cursor(list);
  token_cursor::place here = cursor.here();
  token_cursor::place before = here;
  std::int64_t n_here = 0;    // numbers in this stretch of them so far
  std::int64_t n_before = 0;  // and in the one before, when one operator stands between
  while (n_here + n_before > 0 ? cursor.next() : cursor.next_number()) {
    if (cursor.is_number()) {
      if (n_here++ == 0) here = cursor.here();
    } else if (n_before >= 2 && n_here == 2) {
      return cursor.list_from(before);
    } else {
      n_before = n_here;
      before = here;
      n_here = 0;
    }
  }
  if (n_before >= 2) return cursor.list_from(before);
  return cursor.list_from(n_here > 0 ? here : cursor.here());
}

/// True when the macro's body stands at the head of a list, which then moves past it.
bool definition_follows(token_list& rest) {
  for (token_list body(macro_body); !body.empty();) {
    if (rest.empty() || tok_neq_tok(rest.take_head(), body.take_head())) return false;
  }
  return true;
}

/// True when the name is used for the macro's definition at most. Sets `existing` to the first
/// place that holds it, without its line.
bool is_safe_name(std::string_view name, const token_list& list,
                  std::optional<token_list>& existing, bool verbose, text_writer& console) {
  const std::string_view text(list.text_begin(), list.n_bytes());
  for (std::size_t at = text.find(name); at != std::string_view::npos;
       at = text.find(name, at + 1)) {
    const std::size_t after = at + name.size();
    const bool is_token =
        (at == 0 || ends_word(text[at - 1])) && (after == text.size() || ends_word(text[after]));
    if (!is_token) continue;

    const token_list here = list.from(&text[at], 0);
    token_list rest = here;
    rest.take_head();
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
                                     bool verbose, text_writer& console, kept_polygons* kept) {
  console.put("Looking for polygon drawing operators...").put(nl).flush();
  if (verbose) console.put("Possible drawing token sets:").put(nl);

  // Ordered: no file can be made to slow it down, as colliding texts do to a hash table.
  std::map<std::string, drawing_token_set> candidates;
  const drawing_token_set* best = nullptr;
  const drawing_token_set* drawn_kept = nullptr;  // what those that are kept are drawn with
  token_list start = list;
  while (!start.empty()) {
    start = next_possible_run(start);
    token_list next = start;
    if (!next.take_head().is_number()) {
      start = next;
      continue;
    }
    const bool had_kept = kept != nullptr && kept->n_polygons > 0;
    run_pattern run(start, min_separators, kept);
    if (run.read() < 2) {
      // Any later start in the same stretch of numbers would meet the same tokens and fail like
      // this one, and the last number alone cannot start a polygon: go on after the stretch.
      start = run.after_numbers;
      continue;
    }

    if (verbose) display_dts(run.set, true, console);
    const auto [found, added] = candidates.try_emplace(signature(run.set), run.set);
    drawing_token_set& candidate = found->second;
    if (!added) candidate.token_count += run.set.token_count;
    if (kept != nullptr && !had_kept && kept->n_polygons > 0) drawn_kept = &candidate;
    if (best == nullptr || candidate.token_count > best->token_count) best = &candidate;
    start = run.resume;
  }

  if (best == nullptr) {
    console.put("trellion: fatal error --- no drawing operators detected.").put(nl);
    throw early_end{end_reason::no_operators};
  }
  display_dts(*best, false, console);
  // The walk reads no polygons at once that an operator varies in.
  const std::vector<token>& trailing = best->trailing_operators;
  const bool varies = !trailing.empty() && trailing.back().kind == token_kind::varying;
  if (kept != nullptr && (drawn_kept != best || varies)) *kept = {};
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
  throw early_end{end_reason::no_safe_name};
}

void write_definition(const fill_macro& macro, text_writer& out) {
  out.put(macro.name).put(macro_body).put(nl);
}

}  // namespace trellion
