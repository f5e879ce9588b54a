#pragma once

#include <string>
#include <string_view>

namespace trellion::batch {

/// The text of an EPS file without those definitions of its prolog that nothing in it names, and
/// without the prolog's comments. A definition starts with "/" at a line's start and ends with
/// "def" or "ifelse" at a line's end, maps of characters with their section; any that cannot be
/// told apart safely is kept.
std::string without_unused_definitions(std::string_view eps);

}  // namespace trellion::batch
