#include "batch/prolog.h"

#include <algorithm>
#include <unordered_map>
#include <utility>
#include <vector>

namespace trellion::batch {
namespace {

constexpr std::string_view prolog_begin = "\n%%BeginProlog";
constexpr std::string_view prolog_end = "\n%%EndProlog";
// What can stand before or after a name in PostScript.
constexpr std::string_view delimiters = " \t\r\n\f()<>[]{}/%";

// Maps of characters for fonts of many letters, up to the end of the prolog or of its section.
constexpr std::string_view character_maps = "/CIDInit /ProcSet findresource begin\n";

/// Calls f with every word.
template <class F>
void for_each_word(std::string_view text, F f) {
  while (true) {
    const std::size_t begin = text.find_first_not_of(delimiters);
    if (begin == std::string_view::npos) return;
    text.remove_prefix(begin);
    const std::string_view word = text.substr(0, text.find_first_of(delimiters));
    f(word);
    text.remove_prefix(word.size());
  }
}

/// A stretch of whole lines of a prolog.
struct piece {
  std::string_view text;
  bool is_definition = false;
  bool is_needed = true;
};

/// Calls f with the names that a definition defines: its first, or, when it chooses between several
/// definitions, all that it mentions.
template <class F>
void for_each_defined_name(std::string_view definition, F f) {
  const bool is_choice = definition.find(" where {\n") < definition.find('\n') ||
                         definition.starts_with(character_maps);
  for (std::size_t at = 0; at < definition.size();
       at = is_choice ? definition.find('/', at + 1) : definition.size()) {
    const std::string_view from = definition.substr(at + 1);
    f(from.substr(0, from.find_first_of(delimiters)));
  }
}

std::string_view take_line(std::string_view& text) {
  const std::string_view line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
  text.remove_prefix(line.size());
  return line;
}

/// Takes the character maps that the text begins with.
std::string_view take_character_maps(std::string_view& text) {
  const std::string_view maps = text.substr(0, std::min(text.find("\n%%"), text.size() - 1) + 1);
  text.remove_prefix(maps.size());
  return maps;
}

/// Takes the definition that the text begins with; nothing when its end is not plain to see.
std::string_view take_definition(std::string_view& text) {
  if (text.starts_with(character_maps)) return take_character_maps(text);
  std::string_view rest = text;
  int depth = 0;
  int n_definitions = 0;  // outside braces
  while (!rest.empty()) {
    std::string_view line = take_line(rest);
    // Braces in strings and comments are not for counting.
    if (line.find_first_of("()%") != std::string_view::npos) return {};
    for (std::size_t i = 0; i < line.size(); ++i) {
      if (line[i] == '{') ++depth;
      if (line[i] == '}') --depth;
      if (depth == 0 && line.substr(i).starts_with(" def")) ++n_definitions;
    }
    while (line.ends_with('\n') || line.ends_with(' ')) line.remove_suffix(1);
    if (depth > 0) continue;
    const bool at_end = n_definitions == 1 ? line.ends_with(" def") : line == "} ifelse";
    if (depth < 0 || n_definitions > 1 || !at_end) return {};
    const std::string_view definition = text.substr(0, text.size() - rest.size());
    text = rest;
    return definition;
  }
  return {};
}

std::vector<piece> cut(std::string_view prolog) {
  std::vector<piece> pieces;
  while (!prolog.empty()) {
    const std::string_view definition =
        prolog.starts_with('/') ? take_definition(prolog) : std::string_view();
    if (!definition.empty()) {
      pieces.push_back({definition, true, false});
      continue;
    }
    const std::string_view line = take_line(prolog);
    if (!line.starts_with('%') || line.starts_with("%%")) pieces.push_back({line});
  }
  return pieces;
}

/// Marks the definitions that are named in the texts, and those that these name, and so on.
void mark_needed(std::vector<piece>& pieces, std::vector<std::string_view> texts) {
  std::unordered_multimap<std::string_view, piece*> definitions;
  for (piece& p : pieces) {
    if (p.is_definition) {
      for_each_defined_name(p.text, [&](std::string_view name) { definitions.emplace(name, &p); });
    } else {
      texts.push_back(p.text);
    }
  }
  while (!texts.empty()) {
    const std::string_view text = texts.back();
    texts.pop_back();
    for_each_word(text, [&](std::string_view word) {
      const auto [first, last] = definitions.equal_range(word);
      for (auto at = first; at != last; ++at) {
        if (!std::exchange(at->second->is_needed, true)) texts.push_back(at->second->text);
      }
      definitions.erase(first, last);
    });
  }
}

}  // namespace

std::string without_unused_definitions(std::string_view eps) {
  const std::size_t begin = eps.find(prolog_begin);
  const std::size_t end = eps.find(prolog_end);
  if (begin == std::string_view::npos || end == std::string_view::npos || end < begin) {
    return std::string(eps);
  }
  const std::string_view before = eps.substr(0, begin + 1);
  const std::string_view after = eps.substr(end + 1);
  std::vector<piece> pieces = cut(eps.substr(begin + 1, end - begin));
  mark_needed(pieces, {before, after});

  std::string result(before);
  for (const piece& p : pieces) {
    if (p.is_needed) result += p.text;
  }
  return result += after;
}

}  // namespace trellion::batch
