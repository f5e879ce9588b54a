#include "batch/process.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include "batch/text.h"

namespace trellion::batch {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::size_t max_messages = std::size_t{1} << 16;
constexpr int cannot_be_run = 127;  // as shells have it

/// The running time that is left. It is counted in slices: one that took far longer than asked was
/// no waiting, but this process was stopped, as by Ctrl-Z.
class running_clock {
 public:
  explicit running_clock(milliseconds limit)
      : left_(limit), slice_(std::clamp(limit / 16, milliseconds(1), milliseconds(250))) {}

  /// Milliseconds to wait at most before the next tick.
  [[nodiscard]] int slice() const { return static_cast<int>(slice_.count()); }
  void tick() {
    const steady_clock::time_point now = steady_clock::now();
    left_ -= std::min<steady_clock::duration>(now - last_, 2 * slice_);
    last_ = now;
  }
  [[nodiscard]] bool has_run_out() const { return left_ <= steady_clock::duration::zero(); }

 private:
  steady_clock::duration left_;
  milliseconds slice_;
  steady_clock::time_point last_ = steady_clock::now();
};

/// Reads once into the buffer; nothing at the end.
std::string_view read_some(const file_descriptor& from, std::vector<char>& buffer) {
  ssize_t count = 0;
  do {
    count = ::read(from.get(), buffer.data(), buffer.size());
  } while (count < 0 && errno == EINTR);
  return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

/// The end of a stream of messages.
class last_messages {
 public:
  void add(std::string_view bytes) {
    text_ += bytes;
    if (text_.size() > 2 * max_messages) cut();
  }
  /// Line by line as they can be shown.
  std::string shown() {
    cut();
    std::string result;
    for (std::string_view rest = text_; !rest.empty();) {
      const std::size_t length = std::min(rest.find('\n'), rest.size());
      result += printable(rest.substr(0, length));
      rest.remove_prefix(length);
      if (rest.empty()) break;
      result += '\n';
      rest.remove_prefix(1);
    }
    return result;
  }

 private:
  void cut() { text_.erase(0, text_.size() - std::min(text_.size(), max_messages)); }

  std::string text_;
};

void add_end(const supervisor_report& end, child_result& result) {
  if (end.what == supervisor_report::kind::not_started) {
    result.status = cannot_be_run;
    result.messages = "cannot be run: " + std::generic_category().message(end.value);
  } else if (WIFSIGNALED(end.value)) {
    result.how = child_result::ending::killed;
    result.status = WTERMSIG(end.value);
  } else {
    result.status = WEXITSTATUS(end.value);
  }
}

/// The last line that begins as Ghostscript's telling ones do, or else the last of all.
std::string_view most_telling_line(std::string_view messages) {
  std::string_view last;
  std::string_view telling;
  while (!messages.empty()) {
    const std::string_view line = messages.substr(0, messages.find('\n'));
    messages.remove_prefix(std::min(messages.size(), line.size() + 1));
    if (line.starts_with("Error: ")) telling = line;
    if (!line.empty()) last = line;
  }
  return telling.empty() ? last : telling;
}

/// How programs say that there is no memory left for them.
bool tells_of_memory(std::string_view line) {
  constexpr std::array<std::string_view, 6> words = {
      "VMerror",        "bad_alloc", "ut of memory", "ot enough memory", "annot allocate memory",
      "emory exhausted"};
  return std::ranges::any_of(
      words, [line](std::string_view word) { return line.find(word) != std::string_view::npos; });
}

}  // namespace

std::string child_result::reason() const {
  switch (how) {
    case ending::timed_out: return "takes too long (--time-limit SECONDS allows more)";
    case ending::interrupted: return "interrupted";
    case ending::stopped: return "writes more than expected";
    case ending::killed:
      if (status == SIGXFSZ) return "writes too much";
      break;
    case ending::exited: break;
  }
  const std::string_view line = most_telling_line(messages);
  if (tells_of_memory(line)) return "needs too much memory (--memory-limit MB allows more)";
  if (!line.empty()) return std::string(line);
  return (how == ending::killed ? "killed by signal " : "exit status ") + std::to_string(status);
}

child_result process_runner::run(const std::vector<std::string>& command,
                                 const std::filesystem::path& directory, const output_taker& take,
                                 const child_limits& limits) const {
  using ending = child_result::ending;
  running_clock clock(limits.running_time);
  child program(command, directory, limits, {interrupted_.former_mask(), open_files_});

  child_result result;
  last_messages messages;
  std::vector<char> buffer(std::size_t{1} << 16);
  std::array<pollfd, 4> watched = {{{program.output().get(), POLLIN, 0},
                                    {program.messages().get(), POLLIN, 0},
                                    {program.lifeline().get(), POLLIN, 0},
                                    {interrupted_.descriptor(), POLLIN, 0}}};
  auto& [output, errors, lifeline, interrupt] = watched;
  bool ended = false;
  while (result.how == ending::exited) {
    for (pollfd& stream : watched) stream.revents = 0;
    // When the program has ended, what it wrote is there already. A stream may stay open longer:
    // a process that has left the group may hold it.
    ::poll(watched.data(), watched.size(), ended ? 0 : clock.slice());
    clock.tick();
    const bool nothing_to_read = output.revents == 0 && errors.revents == 0;
    if (ended && (nothing_to_read || clock.has_run_out())) break;
    if (output.revents != 0) {
      const std::string_view bytes = read_some(program.output(), buffer);
      if (bytes.empty()) output.fd = -1;  // poll leaves it alone
      if (!bytes.empty() && !take(bytes)) result.how = ending::stopped;
    }
    if (errors.revents != 0) {
      const std::string_view bytes = read_some(program.messages(), buffer);
      if (bytes.empty()) errors.fd = -1;
      messages.add(bytes);
    }
    if (lifeline.revents != 0) {
      ended = true;
      lifeline.fd = -1;
    }
    if (!ended && clock.has_run_out()) result.how = ending::timed_out;
    if (interrupt.revents != 0) result.how = ending::interrupted;
  }
  result.messages = messages.shown();
  if (result.how == ending::exited) add_end(program.end(), result);
  return result;
}

}  // namespace trellion::batch
