#include "files.h"

#include <cstdio>

namespace trellion::testing {

std::string pdf_of(const std::vector<std::string>& objects, const std::string& trailer) {
  std::string text = "%PDF-1.7\n";
  const std::string size = std::to_string(objects.size() + 1);
  std::string table = "xref\n0 " + size + "\n0000000000 65535 f \n";
  for (std::size_t i = 0; i < objects.size(); ++i) {
    const std::string offset = std::to_string(text.size());
    table += std::string(10 - offset.size(), '0') + offset + " 00000 n \n";
    text += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
  }
  return text + table + "trailer\n<</Root 1 0 R/Size " + size + trailer + ">>\nstartxref\n" +
         std::to_string(text.size()) + "\n%%EOF\n";
}

std::string stream(const std::string& text, const std::string& keys) {
  return "<</Length " + std::to_string(text.size()) + keys + ">>\nstream\n" + text + "\nendstream";
}

std::string triangles(int squares) {
  std::string text = "1 0 0 rg\n";
  for (int i = 0; i < squares; ++i) {
    const std::string left = std::to_string(i);
    const std::string right = std::to_string(i + 1);
    text += left + " 0 m " + right + " 0 l " + right + " 1 l h f\n";
    text += left + " 0 m " + right + " 1 l " + left + " 1 l h f\n";
  }
  return text;
}

std::string one_page(const std::string& keys, std::vector<std::string> more) {
  more.insert(more.begin(), {"<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
                             "<</Type/Page/Parent 2 0 R/MediaBox[0 0 100 100]" + keys + ">>"});
  return pdf_of(more);
}

}  // namespace trellion::testing
