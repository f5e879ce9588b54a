#pragma once

#include <atomic>
#include <csignal>
#include <thread>

#include "batch/descriptors.h"

namespace trellion::batch {

/// Notices SIGINT, SIGTERM, SIGHUP and SIGQUIT, unless they were ignored when it was made, and
/// gives all threads the time to clean up; another one two seconds later ends the process at once.
/// To be made before any thread is started: it blocks the signals in this one and those that it
/// starts. They are as before when it is destroyed, by the same thread.
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

}  // namespace trellion::batch
