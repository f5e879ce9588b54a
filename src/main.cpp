#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <new>
#include <optional>
#include <span>

#include "fields.h"
#include "files.h"
#include "param.h"
#include "postscript_path_queue.h"
#include "report.h"
#include "settings.h"
#include "setup.h"
#include "tokens.h"
#include "v3_engine.h"
#include "walk.h"

namespace {

using namespace trellion;

constexpr int failure_status = 2;

/// The operators to write paths with: those found, or the macro in place of the end of a polygon.
/// The macro's definition is written unless the rest of the file begins with it.
drawing_token_set choose_output_operators(const drawing_token_set& operators,
                                          const fill_macro& macro, const token_list& list,
                                          text_writer& repaired) {
  drawing_token_set output_operators = operators;
  output_operators.end_polygon_token.text = macro.operator_text();
  const bool defined_here = macro.existing_definition && macro.existing_definition->same_head(list);
  if (!defined_here) write_definition(macro, repaired);
  return output_operators;
}

/// Joins the polygons of one group and writes what is left of them.
class group_repair {
 public:
  group_repair(const run_settings& settings, const drawing_token_set& output_operators,
               text_writer& console, text_writer& repaired)
      : settings_(settings),
        output_operators_(output_operators),
        console_(console),
        repaired_(repaired) {}

  void operator()(polygon_group& group) {
    console_.put("Group ").put(integer_field(++group_count_, 3)).put(':');
    ps_path_queue queue = tokens_to_ps_path_queue(group, store_, console_);
    if (queue.n_paths() > 1) {
      repaired_.flush();  // merging can take long, and can end the run
      strata strata = stratify(store_, queue);
      v3_process(store_, strata, settings_.merge_limit, console_);
      gather(strata, queue, console_);
      repaired_.put(' ');  // only here: a group of one path follows the text before it directly
    }
    queue.output(output_operators_, repaired_);
  }

 private:
  const run_settings& settings_;
  const drawing_token_set& output_operators_;
  text_writer& console_;
  text_writer& repaired_;
  path_store store_;
  std::int64_t group_count_ = 0;
};

void repair(const run_settings& settings, byte_source& input, std::size_t expected_size,
            text_writer& console, text_writer& repaired) {
  const file_text text = tokenize_file(input, expected_size, console);
  token_list list(text.view());
  purge_comments(list, repaired);
  write_processing_line(settings.merge_limit, repaired);

  const drawing_token_set operators =
      drawing_token_scan(list, settings.min_separators, settings.verbose, console);
  drawing_token_set output_operators = operators;
  std::optional<fill_macro> macro;
  if (settings.remove_mesh) {
    macro = pgf_setup(list, settings.verbose, console);
    output_operators = choose_output_operators(operators, *macro, list, repaired);
  }
  console.put(nl);

  walk(list, operators, repaired, group_repair(settings, output_operators, console, repaired));
}

void run(std::span<const char* const> arguments, console_output& standard_output,
         text_writer& console) {
  write_banner(console);
  const run_settings settings = obtain_settings(arguments, std::cin, console);

  input_file input(settings.filename);
  output_file repaired_file(settings.repaired_filename, input);
  const std::int32_t start_clock = milliseconds_of_day();
  text_writer repaired(repaired_file);
  standard_output.keep_going();
  try {
    repair(settings, input, input.expected_size(), console, repaired);
  } catch (const coordinate_error& error) {
    repaired.flush();
    throw run_error("'" + settings.filename + "': " + error.what());
  } catch (const std::bad_alloc&) {
    repaired.flush();
    throw run_error("'" + settings.filename + "': not enough memory");
  } catch (...) {
    repaired.flush();
    throw;
  }
  repaired.flush();
  repaired_file.close();

  console.put(nl).put("Repaired filename is '").put(settings.repaired_filename).put('\'').put(nl);
  report_time(start_clock, milliseconds_of_day(), console);
  report_reduction(file_size(settings.filename), file_size(settings.repaired_filename), console);
}

}  // namespace

int main(int argc, char* argv[]) {
  // Writing to a closed pipe, or past the file size limit, is to fail, not to kill.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);

  console_output standard_output;
  text_writer console(standard_output);
  std::string complaint;
  try {
    run({argv + std::min(argc, 1), argv + argc}, standard_output, console);
  } catch (const early_end&) {
    // What there is to say is on the console.
  } catch (const std::exception& error) {
    complaint = error.what();
  }
  standard_output.keep_going();
  console.flush();
  if (complaint.empty() && standard_output.failure() != 0) {
    complaint = system_failure("write", "standard output", standard_output.failure()).what();
  }
  if (complaint.empty()) return 0;
  std::fprintf(stderr, "trellion: %s\n", complaint.c_str());
  return failure_status;
}
