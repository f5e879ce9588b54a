#pragma once

#include <string>
#include <vector>

namespace trellion::testing {

/// A PDF file with these objects, numbered from 1; the first is the catalogue. `trailer` is added
/// to the keys of the trailer.
std::string pdf_of(const std::vector<std::string>& objects, const std::string& trailer = "");

/// A stream, as it stands, with more keys for its dictionary.
std::string stream(const std::string& text, const std::string& keys = "");

/// A row of squares in two triangles each, all of one colour, one polygon to a line.
std::string triangles(int squares);

/// A document of one page, of which `keys` has all but its type, parent and size. The catalogue,
/// the pages and the page are the objects 1 to 3, `more` those from 4 on.
std::string one_page(const std::string& keys, std::vector<std::string> more);

}  // namespace trellion::testing
