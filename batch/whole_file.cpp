#include "batch/whole_file.h"

#include "files.h"

namespace trellion::batch {

std::string read_whole(const std::filesystem::path& path, std::uint64_t most) {
  input_file file(path);
  std::string text;
  std::size_t size = 0;
  text.resize(file.expected_size() + 1);
  while (const std::size_t count = file.read(text.data() + size, text.size() - size)) {
    size += count;
    if (size > most) throw run_error("'" + path.string() + "' is too large");
    if (size == text.size()) text.resize(2 * size);
  }
  text.resize(size);
  return text;
}

void write_whole(const std::filesystem::path& path, std::string_view head, std::string_view text) {
  output_file file(path, output_file::mode::replace);
  file.write(head);
  file.write(text);
  file.close();
}

}  // namespace trellion::batch
