#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "failures.h"

namespace trellion {

/// Where bytes come from. `read` fills the buffer with at most `capacity` bytes and returns how
/// many; 0 is the end. Throws read_failure.
class byte_source {
 public:
  virtual ~byte_source() = default;
  virtual std::size_t read(char* buffer, std::size_t capacity) = 0;
};

/// Where bytes go. `write` takes all of them or throws.
class byte_sink {
 public:
  virtual ~byte_sink() = default;
  virtual void write(std::string_view bytes) = 0;
};

/// Gathers what is written and hands it to the sink in large pieces. Nothing is written at the end
/// of its life: whoever owns it flushes it where a failure can be reported.
class text_writer {
 public:
  /// The sink must outlive the writer.
  explicit text_writer(byte_sink& sink);

  text_writer& put(char c) {
    if (used_ == capacity) flush();
    buffer_[used_++] = c;
    return *this;
  }
  text_writer& put(std::string_view text);
  /// The character `count` times.
  text_writer& repeat(std::size_t count, char c);
  /// Where the next `count` bytes go, few; `advance` tells how many of them have been written.
  char* room_for(std::size_t count) {
    if (count > capacity - used_) flush();
    return buffer_.get() + used_;
  }
  void advance(std::size_t count) { used_ += count; }
  void flush();

 private:
  static constexpr std::size_t capacity = std::size_t{1} << 16;
  byte_sink& sink_;
  std::unique_ptr<char[]> buffer_;
  std::size_t used_ = 0;
};

}  // namespace trellion
