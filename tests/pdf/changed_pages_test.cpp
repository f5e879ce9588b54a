#include "pdf/changed_pages.h"

#include <gtest/gtest.h>

#include "pdf_files.h"
#include "support.h"

namespace trellion::testing {
namespace {

class changed_page_numbers : public ::testing::Test {
 protected:
  using numbers = std::vector<std::int64_t>;

  numbers of(const std::string& before, const std::string& after) const {
    directory.write("a.pdf", before);
    directory.write("b.pdf", after);
    numbers found;
    for (const auto& page :
         pdf::changed_pages(directory.path() / "a.pdf", directory.path() / "b.pdf")) {
      EXPECT_EQ(page.width, 60);
      EXPECT_EQ(page.height, 60);
      found.push_back(page.number);
    }
    return found;
  }

  const scratch_directory directory;
};

TEST_F(changed_page_numbers, are_those_of_pages_drawn_with_other_bytes) {
  const std::string document = document_of({"1 w", "/F Do", "n"}, "0 g");
  EXPECT_EQ(of(document, document), numbers());
  EXPECT_EQ(of(document, document_of({"1 w", "/F Do ", "n"}, "0 g")), numbers{2});
  // All of them have the form among their resources, be it that they do not draw it.
  EXPECT_EQ(of(document, document_of({"1 w", "/F Do", "n"}, "1 g")), (numbers{1, 2, 3}));
  std::string turned = document;
  turned.replace(turned.find("/Contents 6"), 0, "/Rotate 90");
  EXPECT_EQ(of(document, turned), numbers{2});
  // Annotations lead back to their page by this name; a form may have it, too.
  const auto renamed = [](std::string bytes) {
    return bytes.replace(bytes.find("<</F"), 4, "<</P");
  };
  EXPECT_EQ(of(renamed(document), renamed(document_of({"1 w", "/F Do", "n"}, "1 g"))),
            (numbers{1, 2, 3}));
  EXPECT_THROW(of(document, document_of({"1 w", "/F Do"}, "0 g")), run_error);
  EXPECT_THROW(of(document, "nothing"), run_error);
}

}  // namespace
}  // namespace trellion::testing
