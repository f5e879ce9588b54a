#include "batch/interruption.h"

#include <unistd.h>

#include <array>
#include <chrono>

namespace trellion::batch {
namespace {

constexpr std::array watched_signals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
// Sent to the watcher by ourselves, to end it.
constexpr int farewell = SIGUSR1;

bool is_ignored(int signal_number) {
  struct sigaction action {};
  ::sigaction(signal_number, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

}  // namespace

interruption::interruption() : wake_(make_pipe()) {
  ::sigemptyset(&watched_);
  ::sigaddset(&watched_, farewell);
  for (const int number : watched_signals) {
    if (!is_ignored(number)) ::sigaddset(&watched_, number);
  }
  ::pthread_sigmask(SIG_BLOCK, &watched_, &former_mask_);
  watcher_ = std::thread([this] { watch(); });
}

void interruption::watch() {
  using std::chrono::steady_clock;
  // Signals that come together mean one interruption.
  constexpr auto time_to_clean_up = std::chrono::seconds(2);
  steady_clock::time_point first;
  while (true) {
    siginfo_t info{};
    const int number = ::sigwaitinfo(&watched_, &info);
    if (number == farewell && info.si_pid == ::getpid()) return;
    if (number < 0 || number == farewell) continue;
    if (requested()) {
      if (steady_clock::now() - first > time_to_clean_up) end_by_signal();
      continue;
    }
    first = steady_clock::now();
    signal_number_ = number;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(wake_.write.get(), &byte, 1);
  }
}

interruption::~interruption() {
  ::pthread_kill(watcher_.native_handle(), farewell);
  watcher_.join();
  ::pthread_sigmask(SIG_SETMASK, &former_mask_, nullptr);
}

bool interruption::requested() const { return signal_number_ != 0; }

void interruption::end_by_signal() const {
  if (!requested()) return;
  std::signal(signal_number_, SIG_DFL);
  ::pthread_sigmask(SIG_SETMASK, &former_mask_, nullptr);
  ::raise(signal_number_);
}

}  // namespace trellion::batch
