#pragma once

#include <string>
#include <vector>

#include "pdf/files.h"

namespace trellion::testing {

/// A PDF file with a page of 60 points for each of the contents, not compressed. All of them may
/// draw the form /F, which comes last among the objects.
inline std::string document_of(const std::vector<std::string>& contents,
                               const std::string& form = "") {
  std::vector<std::string> objects = {"<</Type/Catalog/Pages 2 0 R>>", ""};
  std::string kids;
  for (const std::string& content : contents) {
    kids += std::to_string(objects.size() + 1) + " 0 R ";
    objects.push_back("<</Type/Page/Parent 2 0 R/Contents " + std::to_string(objects.size() + 2) +
                      " 0 R>>");
    objects.push_back(stream(content));
  }
  objects.push_back(stream(form, "/Type/XObject/Subtype/Form/Resources<<>>/BBox[0 0 60 60]"));
  objects[1] = "<</Type/Pages/MediaBox[0 0 60 60]/Resources<</XObject<</F " +
               std::to_string(objects.size()) + " 0 R>>>>/Count " +
               std::to_string(contents.size()) + "/Kids[" + kids + "]>>";
  return pdf_of(objects);
}

/// The content of a page: n by n squares of a few points, in columns of three colours.
inline std::string mesh_content(int n) {
  std::string text;
  for (int y = 0; y < n; ++y) {
    for (int x = 0; x < n; ++x) {
      const auto at = [](int value) { return std::to_string(5 + 2 * value) + ".125 "; };
      text += std::string(x % 9 < 3   ? "0 0 1"
                          : x % 9 < 6 ? "0 1 0"
                                      : "1 0 0") +
              " rg " + at(x) + at(y) + "m " + at(x + 1) + at(y) + "l " + at(x + 1) + at(y + 1) +
              "l " + at(x) + at(y + 1) + "l h f\n";
    }
  }
  return text;
}

}  // namespace trellion::testing
