#include "report.h"

#include <chrono>
#include <ctime>

#include "fields.h"
#include "param.h"

namespace trellion {
namespace {

constexpr std::string_view authors_line =
    "Joins the polygons of EPS surfaces. By the trellion developers";
static_assert(authors_line.size() == 62);

constexpr std::string_view contact = "trellion@example.org";

}  // namespace

void write_banner(text_writer& console) {
  console.put(nl).put("*** ").put(version_text).put(" ***").put(nl).put(nl);
  console.put(authors_line).put(nl);
  console.put("Please report bugs to <").put(contact).put(">.").put(nl).put(nl);
  console.flush();
}

void write_processing_line(std::int32_t merge_limit, text_writer& out) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char when[64];
  const std::size_t length = std::strftime(when, sizeof when, " at %H:%M on %d/%m/%Y", &local);
  out.put("%%Processed by ").put(version_text);
  out.put(" with m = ").put(integer_field(merge_limit, 8));
  out.put(std::string_view(when, length)).put(nl);
}

std::int32_t milliseconds_of_day() {
  using namespace std::chrono;
  const auto since_epoch = system_clock::now().time_since_epoch();
  return static_cast<std::int32_t>(duration_cast<milliseconds>(since_epoch % days(1)).count());
}

void report_time(std::int32_t start_clock, std::int32_t end_clock, text_writer& console) {
  constexpr float clock_rate = 1000;  // ticks per second
  const float seconds =
      (static_cast<float>(end_clock) - static_cast<float>(start_clock)) / clock_rate;
  console.put("Processing completed in ").put(fixed_field(seconds, 8, 4)).put(" seconds.").put(nl);
}

void report_reduction(std::uint64_t input_size, std::uint64_t output_size, text_writer& console) {
  // Sizes are 32-bit counts here: of a larger file the low 32 bits take part.
  const auto before = static_cast<float>(static_cast<std::int32_t>(input_size));
  const auto after = static_cast<float>(static_cast<std::int32_t>(output_size));
  const float percent = (1 - after / before) * 100;
  console.put("Achieved ").put(fixed_field(percent, 6, 2)).put("% reduction in file size.").put(nl);
}

}  // namespace trellion
