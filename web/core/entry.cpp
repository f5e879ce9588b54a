// The way into the core for JavaScript: bytes come from it and go to it, the rest stays here.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "postscript_path_queue.h"
#include "repair.h"
#include "settings.h"

namespace {

using namespace trellion;

/// What engine.js makes of the numbers stands there in the same order.
enum class outcome : std::int32_t {
  repaired,
  no_operators,
  no_safe_name,
  collapsed_path,
  bad_coordinate,
  no_memory,
  failed,
};

/// Read from JavaScript's memory as doubles, which hold them exactly.
struct counts {
  double groups;
  double polygons_read;
  double polygons_left;
  double mergers;
  double area_lost;
};

extern "C" {

// What JavaScript provides. Reading returns the number of bytes, 0 at the end, -1 when it failed.
std::int32_t host_read(char* buffer, std::size_t capacity);
void host_write(const char* bytes, std::size_t size);
void host_console(const char* bytes, std::size_t size);
void host_complain(const char* text, std::size_t size);
void host_progress(double fraction);
}

/// Reading takes about this part of the time, looking for the operators the rest up to the second.
constexpr double read_part = 0.1;
constexpr double scanned_part = 0.4;

/// Tells how far the repair is, at most a hundred times.
class progress_teller {
 public:
  void tell(double fraction) {
    constexpr double step = 0.01;
    if (fraction < told_ + step) return;
    told_ = fraction;
    host_progress(fraction);
  }

 private:
  double told_ = 0;
};

class host_source : public byte_source {
 public:
  host_source(double expected_size, progress_teller& progress)
      : expected_size_(expected_size), progress_(progress) {}

  std::size_t read(char* buffer, std::size_t capacity) override {
    constexpr std::size_t slice = std::size_t{4} << 20;
    const std::int32_t count = host_read(buffer, std::min(capacity, slice));
    if (count < 0) throw run_error("the file could not be read to its end");
    size_ += static_cast<std::size_t>(count);
    const double fraction = static_cast<double>(size_) / std::max(expected_size_, 1.0);
    progress_.tell(read_part * std::min(fraction, 1.0));
    return static_cast<std::size_t>(count);
  }
  /// So far.
  [[nodiscard]] std::size_t size() const { return size_; }

 private:
  double expected_size_;
  progress_teller& progress_;
  std::size_t size_ = 0;
};

class host_sink : public byte_sink {
 public:
  using taker = void(const char* bytes, std::size_t size);
  explicit host_sink(taker* take) : take_(take) {}

  void write(std::string_view bytes) override { take_(bytes.data(), bytes.size()); }

 private:
  taker* take_;
};

outcome outcome_of(end_reason reason) {
  switch (reason) {
    case end_reason::no_operators: return outcome::no_operators;
    case end_reason::no_safe_name: return outcome::no_safe_name;
    case end_reason::collapsed_path: return outcome::collapsed_path;
    case end_reason::usage:
    case end_reason::missing_file: break;  // without a command line there are none
  }
  return outcome::failed;
}

void complain(std::string_view text) { host_complain(text.data(), text.size()); }

outcome run(const run_settings& settings, double expected_size, counts& found) {
  progress_teller progress;
  host_source source(expected_size, progress);
  host_sink console_sink(host_console);
  host_sink repaired_sink(host_write);
  text_writer console(console_sink);
  text_writer repaired(repaired_sink);
  const auto tell_progress = [&](std::size_t bytes_left) {
    const double left = static_cast<double>(bytes_left) / static_cast<double>(source.size());
    progress.tell(scanned_part + (1 - scanned_part) * (1 - left));
  };
  outcome result = outcome::repaired;
  try {
    const repair_summary summary = repair(settings, source, static_cast<std::size_t>(expected_size),
                                          console, repaired, tell_progress);
    found = {static_cast<double>(summary.groups), static_cast<double>(summary.polygons_read),
             static_cast<double>(summary.polygons_left), static_cast<double>(summary.mergers),
             summary.area_lost ? 1.0 : 0.0};
  } catch (const early_end& end) {
    result = outcome_of(end.reason);
  } catch (const coordinate_error& error) {
    complain(error.what());
    result = outcome::bad_coordinate;
  } catch (const std::bad_alloc&) {
    result = outcome::no_memory;
  } catch (const std::exception& error) {
    complain(error.what());
    result = outcome::failed;
  }
  // What there is of it stands, as it does on a console.
  repaired.flush();
  console.flush();
  return result;
}

}  // namespace

extern "C" {

/// Repairs what host_read gives. `expected_size` is in bytes. Returns an outcome.
[[gnu::visibility("default")]] std::int32_t repair_figure(double expected_size,
                                                          std::int32_t merge_limit,
                                                          std::int32_t min_separators,
                                                          std::int32_t remove_mesh,
                                                          std::int32_t verbose, counts* found) {
  run_settings settings;
  settings.merge_limit = merge_limit;
  settings.min_separators = min_separators;
  settings.remove_mesh = remove_mesh != 0;
  settings.verbose = verbose != 0;
  try {
    return static_cast<std::int32_t>(run(settings, expected_size, *found));
  } catch (const std::bad_alloc&) {
    return static_cast<std::int32_t>(outcome::no_memory);
  }
}

/// Memory for the counts that repair_figure finds.
[[gnu::visibility("default")]] counts* counts_of_repair() {
  static counts found;
  return &found;
}
}
