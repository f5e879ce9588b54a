#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "files.h"
#include "pdf/content_repair.h"

namespace trellion::pdf {

/// What a repair of a document did.
struct document_summary {
  std::int64_t pages = 0;
  std::int64_t streams_changed = 0;  ///< 0: the result is the input byte for byte
  std::int64_t polygons_read = 0;
  std::int64_t polygons_left = 0;
  std::uint64_t bytes_read = 0;
  std::uint64_t bytes_written = 0;
};

/// The document is not to be changed, or cannot be read: signed, encrypted, damaged, no PDF. The
/// text says which.
class refusal : public run_error {
 public:
  using run_error::run_error;
};

/// Repairs a document, and writes the result to a new file, which is no larger: when nothing is
/// gained it is the input byte for byte. (Closing may enlarge it.) Throws refusal, and run_error
/// when a file cannot be read or written.
document_summary repair_document(const std::filesystem::path& input,
                                 const std::filesystem::path& output,
                                 const content_settings& settings);

/// The size of a page's sheet, in points.
struct page_size {
  double width = 0;
  double height = 0;
};

/// The sizes of the pages, as programs draw them that know no larger units. Throws as above.
std::vector<page_size> page_sizes(const std::filesystem::path& input);

}  // namespace trellion::pdf
