#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "bytes.h"

namespace trellion {

/// An open file, closed with the object.
class file_descriptor {
 public:
  explicit file_descriptor(int descriptor) : descriptor_(descriptor) {}
  file_descriptor(file_descriptor&& other) noexcept;
  file_descriptor& operator=(file_descriptor&&) = delete;
  ~file_descriptor();

  [[nodiscard]] int get() const { return descriptor_; }
  /// Gives up the descriptor; the caller closes it.
  int release();

 private:
  int descriptor_;
};

/// The input file, read as it stands.
class input_file : public byte_source {
 public:
  /// Opens the file for reading; throws run_error when that fails or it is a directory.
  explicit input_file(const std::string& name);

  std::size_t read(char* buffer, std::size_t capacity) override;
  /// How many bytes the file is likely to hold; 0 when it cannot be known.
  [[nodiscard]] std::size_t expected_size() const;

 private:
  friend class output_file;
  std::string name_;
  file_descriptor file_;
  struct stat status_;  // as it was when the file was opened
};

/// A file to write, created when absent.
class output_file : public byte_sink {
 public:
  enum class mode { replace, append };

  /// Opens a file; what is in it goes, or stays in front. Throws run_error when that fails.
  output_file(const std::string& name, mode how);
  /// Opens the repaired file of an input, and empties it. Throws run_error when that fails, or when
  /// it is, or may be, the input itself under another name: then nothing has been touched. Nobody
  /// is permitted more than with the input: a new file gets no wider permissions, one that exists
  /// is narrowed as far as the system lets us, before anything is written.
  output_file(const std::string& name, const input_file& input);

  /// Throws run_error with the file's name and the reason (a full disk, say).
  void write(std::string_view bytes) override;
  /// Closes the file; throws run_error when the system reports a late write failure.
  void close();

 private:
  std::string name_;
  file_descriptor file_;
};

/// Standard output. A failure is thrown as run_error, until keep_going is called: a console that
/// has gone away must not stop a repair that is under way. From then on the first failure is
/// remembered and whatever follows it is dropped.
class console_output : public byte_sink {
 public:
  void write(std::string_view bytes) override;
  void keep_going() { keeps_going_ = true; }
  /// The error number of the first failure; 0 while there was none.
  [[nodiscard]] int failure() const { return failure_; }

 private:
  bool keeps_going_ = false;
  int failure_ = 0;
};

/// True unless the system says that there is no such file. A file that is there but out of reach
/// exists: opening it gives the reason.
bool file_exists(const std::string& name);

/// The size in bytes that the file system reports; 0 when it reports none.
std::uint64_t file_size(const std::string& name);

}  // namespace trellion
