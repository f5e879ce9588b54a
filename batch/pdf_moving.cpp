#include "batch/pdf_moving.h"

#include <array>
#include <cstdio>
#include <exception>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include "files.h"

namespace trellion::batch {

void write_moved(const std::filesystem::path& source, const std::filesystem::path& moved,
                 const shift& by) {
  // The sheet stays as it is: renderers round its size.
  std::array<char, 80> matrix{};
  std::snprintf(matrix.data(), matrix.size(), "1 0 0 1 %.6f %.6f cm\n", by.right, by.up);
  try {
    QPDF document;
    document.setSuppressWarnings(true);
    document.processFile(source.c_str());
    QPDFObjectHandle before = document.newStream(matrix.data());
    for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(document).getAllPages()) {
      page.addPageContents(before, true);
    }
    QPDFWriter writer(document, moved.c_str());
    writer.setStreamDataMode(qpdf_s_preserve);
    writer.write();
  } catch (const std::exception& error) {
    throw run_error(error.what());
  }
}

}  // namespace trellion::batch
