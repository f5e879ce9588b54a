#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace trellion {

/// Free-form reading of one item, as people type it at a prompt or after an option. Blanks and
/// tabs before the item are skipped; blank, tab, comma, semicolon, slash or the end of the text
/// ends it, and whatever follows is ignored. An empty item (a comma, semicolon or slash stands
/// where the item should begin) is a successful read that leaves the variable as it was.

/// Reads an optional sign and digits within the range of `value`. Returns false, and leaves
/// `value` alone, when the text holds no item or the item is anything else.
bool read_integer(std::string_view text, std::int32_t& value);

/// Reads a name. In single or double quotes it may hold anything, a doubled quote standing for
/// one. Returns false, and leaves `name` alone, when the text holds no item.
bool read_name(std::string_view text, std::string& name);

/// The next line that holds more than blanks and tabs, without its line end. Returns false at the
/// end of the input.
bool next_answer(std::istream& answers, std::string& line);

}  // namespace trellion
