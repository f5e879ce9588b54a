#pragma once

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "files.h"

namespace trellion::batch {

/// A pipe that no child inherits.
struct pipe_ends {
  file_descriptor read;
  file_descriptor write;
};

/// Throws run_error when the system allows no more.
pipe_ends make_pipe();

/// Notices SIGINT, SIGTERM and SIGHUP, unless they were ignored when it was made, and gives all
/// threads the time to clean up; another one two seconds later ends the process at once. To be made
/// before any thread is started: it blocks the signals in this one and those that it starts.
class interruption {
 public:
  interruption();
  ~interruption();
  interruption(const interruption&) = delete;
  interruption& operator=(const interruption&) = delete;

  [[nodiscard]] bool requested() const;
  /// Can be read from as soon as an interruption is requested; to be polled, never read.
  [[nodiscard]] int descriptor() const { return wake_.read.get(); }
  /// The signals as they were blocked before, for children.
  [[nodiscard]] const sigset_t& former_mask() const { return former_mask_; }
  /// Ends the process by the signal that was noticed. Returns when there was none.
  void end_by_signal() const;

 private:
  void watch();

  sigset_t watched_{};
  sigset_t former_mask_{};
  pipe_ends wake_;
  std::atomic<int> signal_number_ = 0;
  std::thread watcher_;
};

/// How a child process ended.
struct child_result {
  enum class ending { exited, killed, timed_out, interrupted };

  ending how = ending::exited;
  int status = 0;        ///< exit status, or the number of the signal that killed it
  std::string messages;  ///< the beginning of what it wrote on standard error

  [[nodiscard]] bool succeeded() const { return how == ending::exited && status == 0; }
  /// What went wrong, in words: the last line of `messages`, if there are any.
  [[nodiscard]] std::string reason() const;
};

using line_handler = std::function<void(std::string_view line)>;

/// Runs programs as children: in a given directory, which is also their directory for temporary
/// files, with nothing to read, for a limited time each. No file that they write grows beyond 8
/// GiB.
class process_runner {
 public:
  process_runner(const interruption& interrupted, std::chrono::seconds time_limit)
      : interrupted_(interrupted), time_limit_(time_limit) {}

  /// Runs a program, whose path comes first in the command, and waits for its end. Every line that
  /// it ends on standard output goes to the handler, its first 8192 bytes at least. When it takes
  /// too long, or an interruption is requested, it is killed with all processes that it has
  /// started. Throws run_error when the system allows no child.
  [[nodiscard]] child_result run(const std::vector<std::string>& command,
                                 const std::filesystem::path& directory,
                                 const line_handler& handle_line) const;

 private:
  const interruption& interrupted_;
  std::chrono::seconds time_limit_;
};

/// The path of a program in PATH.
std::optional<std::string> find_program(const std::string& name);

/// The path of a program beside another one, given as it was called, or else in PATH.
std::optional<std::string> find_program_beside(const std::string& name, const std::string& other);

/// Makes sure that standard input, output and error are open, so that no other file takes their
/// place: those that were closed lead nowhere, and writing to them fails.
void open_standard_streams();

}  // namespace trellion::batch
