#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "support.h"

namespace trellion::testing {
namespace {

/// A one-page PDF of a mesh in five colours, as simple as PDF gets.
std::string pdf_of_a_mesh() {
  std::string page;
  for (unsigned level = 0; level < 5; ++level) {
    page += "0." + std::to_string(2 * level) + " 0.5 0." + std::to_string(9 - level) + " rg\n";
    for (const polygon& p : random_mesh(level, 24, 6)) {
      const char* op = " m ";
      for (const vertex& v : p) {
        page += std::to_string(20 + v[0]) + ' ' +
                std::to_string(20 + v[1] + 60 * static_cast<int>(level)) + op;
        op = " l ";
      }
      page += "h f\n";
    }
  }
  std::string pdf = "%PDF-1.4\n";
  std::vector<std::size_t> offsets;
  const auto object = [&](const std::string& body) {
    offsets.push_back(pdf.size());
    pdf += std::to_string(offsets.size()) + " 0 obj\n" + body + "\nendobj\n";
  };
  object("<< /Type /Catalog /Pages 2 0 R >>");
  object("<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
  object(
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 280 340] /Contents 4 0 R /Resources << >> >>");
  object("<< /Length " + std::to_string(page.size()) + " >>\nstream\n" + page + "endstream");
  const std::size_t table = pdf.size();
  pdf += "xref\n0 5\n0000000000 65535 f \n";
  for (const std::size_t offset : offsets) {
    const std::string digits = std::to_string(offset);
    pdf += std::string(10 - digits.size(), '0') + digits + " 00000 n \n";
  }
  return pdf + "trailer << /Size 5 /Root 1 0 R >>\nstartxref\n" + std::to_string(table) +
         "\n%%EOF\n";
}

struct image {
  std::size_t width = 0;
  std::size_t height = 0;
  std::string pixels;  // three bytes each

  [[nodiscard]] bool differs(const image& other, std::size_t pixel) const {
    return pixels.compare(3 * pixel, 3, other.pixels, 3 * pixel, 3) != 0;
  }
};

image rendered(const std::string& name, const scratch_directory& directory) {
  const outcome result = shell(
      "gs -q -dSAFER -dBATCH -dNOPAUSE -dEPSCrop -sDEVICE=ppmraw -r144 -sOutputFile=out.ppm " +
          name,
      directory);
  EXPECT_EQ(result.status, 0) << result.out << result.err;
  std::istringstream file(directory.read("out.ppm"));
  std::string line;
  while (std::getline(file, line) && (line == "P6" || line.starts_with('#'))) {
  }
  image picture;
  std::istringstream(line) >> picture.width >> picture.height;
  std::getline(file, line);  // the largest value of a colour, 255
  picture.pixels.assign(std::istreambuf_iterator<char>(file), {});
  EXPECT_EQ(picture.pixels.size(), 3 * picture.width * picture.height);
  return picture;
}

/// How many pixels of a differ from b's, and how many together with their four neighbours.
struct difference {
  std::size_t pixels = 0;
  std::size_t in_clusters = 0;
};

difference between(const image& a, const image& b) {
  difference result;
  EXPECT_EQ(a.pixels.size(), b.pixels.size());
  EXPECT_GT(a.pixels.size(), 100000U);
  for (std::size_t y = 1; y + 1 < a.height; ++y) {
    for (std::size_t x = 1; x + 1 < a.width; ++x) {
      const std::size_t pixel = y * a.width + x;
      if (!a.differs(b, pixel)) continue;
      ++result.pixels;
      const bool all_round = a.differs(b, pixel - 1) && a.differs(b, pixel + 1) &&
                             a.differs(b, pixel - a.width) && a.differs(b, pixel + a.width);
      if (all_round) ++result.in_clusters;
    }
  }
  return result;
}

TEST(picture, of_a_foreign_file_is_the_same_after_repair) {
  const scratch_directory directory;
  directory.write("mesh.pdf", pdf_of_a_mesh());
  ASSERT_EQ(shell("pdftops -eps mesh.pdf mesh.eps && trellion mesh.eps", directory).status, 0);
  ASSERT_LT(directory.read("mesh_r.eps").size(), directory.read("mesh.eps").size() - 5000);
  // Joined outlines may shift single pixels along an edge.
  const image before = rendered("mesh.eps", directory);
  const difference joined = between(before, rendered("mesh_r.eps", directory));
  EXPECT_LT(joined.pixels * 1000, before.width * before.height);
  EXPECT_EQ(joined.in_clusters, 0U);

  // Stroked outlines cover pixels beside them as well, but no more than that.
  ASSERT_EQ(shell("trellion mesh.eps -r", directory).status, 0);
  const difference stroked = between(before, rendered("mesh_r.eps", directory));
  EXPECT_LT(stroked.pixels * 10, before.width * before.height);
  EXPECT_EQ(stroked.in_clusters, 0U);
}

}  // namespace
}  // namespace trellion::testing
