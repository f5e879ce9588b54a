#include "bytes.h"

#include <utility>

namespace trellion {

text_writer::text_writer(byte_sink& sink)
    : sink_(sink), buffer_(std::make_unique_for_overwrite<char[]>(capacity)) {}

text_writer& text_writer::put(std::string_view text) {
  if (text.size() > capacity - used_) {
    flush();
    if (text.size() >= capacity) {
      sink_.write(text);
      return *this;
    }
  }
  text.copy(buffer_.get() + used_, text.size());
  used_ += text.size();
  return *this;
}

text_writer& text_writer::repeat(std::size_t count, char c) {
  for (; count > 0; --count) put(c);
  return *this;
}

void text_writer::flush() {
  const std::size_t count = std::exchange(used_, 0);
  if (count > 0) sink_.write({buffer_.get(), count});
}

}  // namespace trellion
