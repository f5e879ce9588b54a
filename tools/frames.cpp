// Shows the merging happen: writes a numbered picture of a file's groups at every step.

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "files.h"
#include "free_form.h"
#include "graphics.h"
#include "postscript_path_queue.h"
#include "setup.h"
#include "tokens.h"
#include "v3_engine.h"
#include "walk.h"

namespace {

using namespace trellion;

struct options {
  std::string file;
  std::filesystem::path directory;
  std::int32_t min_separators = 2;
};

std::optional<options> parse(int argc, char* argv[]) {
  if (argc < 3 || argc > 4) return std::nullopt;
  options result{argv[1], argv[2]};
  if (result.directory.empty()) return std::nullopt;
  if (argc == 3) return result;
  const std::string_view separators = argv[3];
  const bool valid = separators.starts_with("-s") &&
                     read_integer(separators.substr(2), result.min_separators) &&
                     result.min_separators >= 1;
  return valid ? std::optional(result) : std::nullopt;
}

/// Takes bytes and forgets them: what the walk copies is not wanted here.
class no_sink : public byte_sink {
 public:
  void write(std::string_view /*bytes*/) override {}
};

std::int64_t count_paths(strata& strata) {
  std::int64_t count = 0;
  for (const ps_path_queue& queue : strata.used()) count += queue.n_paths();
  return count;
}

/// Merges a group with one merge limit after the other, and draws it whenever that changed it. The
/// engine's progress, told anew for every limit, is left out.
void draw_group(polygon_group& group, path_store& store, text_writer& console) {
  no_sink nowhere;
  text_writer progress(nowhere);
  console.put("Group:");
  ps_path_queue queue = tokens_to_ps_path_queue(group, store, console);
  if (queue.is_empty()) return;
  strata strata = stratify(store, queue);
  const auto draw = [&] {
    create_intermediate_eps(store, strata.used(), console, outline_ending::stroked);
  };
  draw();
  std::int64_t n_paths = count_paths(strata);
  std::uint32_t n = strata.first_used(strata::min_points);
  for (; n != strata::none; n = strata.first_used(n + 1)) {
    v3_process(store, strata, static_cast<std::int32_t>(n), progress);
    if (count_paths(strata) != n_paths) draw();
    n_paths = count_paths(strata);
  }
}

void draw_frames(const options& options, text_writer& console) {
  input_file input(options.file);
  const file_text text = tokenize_file(input, input.expected_size(), console);
  no_sink nowhere;
  text_writer passed_through(nowhere);
  token_list list(text.view());
  purge_comments(list, passed_through);
  const drawing_token_set operators =
      drawing_token_scan(list, options.min_separators, false, console);
  std::filesystem::create_directories(options.directory / "intermediate");
  std::filesystem::current_path(options.directory);
  path_store store;
  store.keeps_boxes = true;
  walk(list, operators, passed_through,
       [&](polygon_group& group) { draw_group(group, store, console); });
}

}  // namespace

int main(int argc, char* argv[]) {
  constexpr const char* usage = "Usage: trellion-frames FILE.eps DIRECTORY [-sp]";
  const std::string_view asked = argc == 2 ? argv[1] : "";
  if (asked == "--version" || asked == "--help") {
    return std::puts(asked == "--help" ? usage : "trellion-frames " TRELLION_VERSION) < 0 ? 2 : 0;
  }
  const auto options = parse(argc, argv);
  if (!options) {
    std::fprintf(stderr, "%s\n", usage);
    return 2;
  }
  // As in trellion: writing that fails is to be told, and a lost console stops nothing.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  console_output standard_output;
  standard_output.keep_going();
  text_writer console(standard_output);
  std::string complaint;
  try {
    draw_frames(*options, console);
  } catch (const early_end&) {
    complaint = "the merging or the search for operators has ended early";
  } catch (const std::exception& error) {
    complaint = error.what();
  }
  console.flush();
  if (complaint.empty() && standard_output.failure() != 0) {
    complaint = system_failure("write", "standard output", standard_output.failure()).what();
  }
  if (complaint.empty()) return 0;
  std::fprintf(stderr, "trellion-frames: %s\n", complaint.c_str());
  return 2;
}
