#include "settings.h"

#include <algorithm>
#include <istream>
#include <string_view>

#include "files.h"
#include "free_form.h"
#include "param.h"

namespace trellion {
namespace {

constexpr std::string_view help_lines[] = {
    "-m: polygons with j points or fewer will be considered for merger unless j = 0",
    "(default), when all polygons are eligible. -s: a minimum of p postscript      ",
    "operators are required to separate consecutive polygons (default 2). -r causes",
    "trellion to remove the mesh (default off). -v is verbose mode (default off).  ",
};
static_assert(std::ranges::all_of(help_lines, [](auto line) { return line.size() == 78; }));

[[noreturn]] void end_with_usage(text_writer& console) {
  console.put("Usage : trellion myfile.eps [-mj] [-sp] [-r] [-v]  ").put(nl).put(nl);
  for (const std::string_view line : help_lines) console.put(line).put(nl);
  throw early_end{end_reason::usage};
}

/// The position of the first argument that does not look like an option.
std::size_t find_filename(std::span<const char* const> arguments, text_writer& console) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (!std::string_view(arguments[i]).starts_with('-')) return i;
  }
  end_with_usage(console);
}

/// Gives a name without any "." the extension ".eps", checks that the file exists, and puts "_r"
/// before the last "." of its name to get that of the repaired file. The dot is looked for in the
/// whole name, directories included.
void complete_names(run_settings& settings, text_writer& console) {
  std::string& name = settings.filename;
  std::size_t dot = name.rfind('.');
  if (dot == std::string::npos) {
    dot = name.size();
    name += ".eps";
  }
  if (!file_exists(name)) {
    console.put("trellion: fatal error --- file '").put(name).put("' does not exist.").put(nl);
    throw early_end{end_reason::missing_file};
  }
  settings.repaired_filename = name.substr(0, dot) + "_r" + name.substr(dot);
}

/// Applies the options in order. Some mistakes end the examination; after the others a valid "-m"
/// or "-s" takes the blame away again, and the run goes on.
bool apply_options(std::span<const char* const> arguments, std::size_t filename_position,
                   run_settings& settings, text_writer& console) {
  bool option_error = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (i == filename_position) continue;
    const std::string_view option = arguments[i];
    const std::string_view value = option.substr(std::min<std::size_t>(option.size(), 2));
    if (option == "-r") {
      settings.remove_mesh = true;
    } else if (option == "-v") {
      settings.verbose = true;
    } else if (option.size() == 2 && option.starts_with('-')) {
      console.put("Unrecognised option ").put(option).put(nl);
      option_error = true;
    } else if (option.size() > 2 && option.starts_with("-m")) {
      option_error = !read_integer(value, settings.merge_limit) || settings.merge_limit < 0;
    } else if (option.size() > 2 && option.starts_with("-s")) {
      option_error = !read_integer(value, settings.min_separators) || settings.min_separators < 1;
    } else {
      return false;
    }
  }
  return !option_error;
}

/// Puts the questions on the console and reads the answers.
class questions {
 public:
  questions(std::istream& answers, text_writer& console) : answers_(answers), console_(console) {}

  void ask_name(std::string& name) {
    constexpr std::size_t max_length = 100;
    if (!ask("Enter name of eps file for repair : ") || !read_name(line_, name)) {
      throw run_error("no file was named: the input has ended");
    }
    name.resize(std::min(name.size(), max_length));
    name.erase(name.find_last_not_of(' ') + 1);
  }

  void ask_number(std::string_view prompt, std::int32_t minimum, std::int32_t& value) {
    while (!ask_integer(prompt, value) || value < minimum) require_more();
  }

  /// The answer is kept from one question to the next. A 2 ends the question even when the read
  /// failed, so one that was given to the question before stands when this answer is unreadable.
  bool ask_yes(std::string_view prompt) {
    while (true) {
      const bool read = ask_integer(prompt, answer_);
      if (answer_ == 2) return true;
      if (read && answer_ == 1) return false;
      require_more();
    }
  }

 private:
  /// Writes the prompt and reads the line of its answer; false at the end of the input.
  bool ask(std::string_view prompt) {
    console_.put(prompt).flush();
    return next_answer(answers_, line_);
  }
  /// Asked again without an end to it, a question would be asked for ever.
  void require_more() const {
    if (!answers_) throw run_error("a question was left without an answer: the input has ended");
  }
  bool ask_integer(std::string_view prompt, std::int32_t& value) {
    return ask(prompt) && read_integer(line_, value);
  }

  std::istream& answers_;
  text_writer& console_;
  std::string line_;
  std::int32_t answer_ = 0;
};

run_settings settings_from_prompts(std::istream& answers, text_writer& console) {
  run_settings settings;
  questions questions(answers, console);
  questions.ask_name(settings.filename);
  console.put("Paths with m points or fewer will be considered eligible for merger.").put(nl);
  questions.ask_number("Enter m (0 for no limit) : ", 0, settings.merge_limit);
  console.put("A minimum of p postscript operators are required to separate consecutive polygons.");
  console.put(nl);
  questions.ask_number("Enter p (2 is usually recommended) : ", 1, settings.min_separators);
  settings.remove_mesh = questions.ask_yes("Remove mesh? 1: no, 2: yes ");
  settings.verbose = questions.ask_yes("Run in verbose mode? 1: no, 2: yes ");
  complete_names(settings, console);
  return settings;
}

run_settings settings_from_arguments(std::span<const char* const> arguments, text_writer& console) {
  run_settings settings;
  const std::size_t filename_position = find_filename(arguments, console);
  settings.filename = arguments[filename_position];
  // Before the options: a missing file is what the user should hear of first.
  complete_names(settings, console);
  if (!apply_options(arguments, filename_position, settings, console)) end_with_usage(console);
  return settings;
}

}  // namespace

run_settings obtain_settings(std::span<const char* const> arguments, std::istream& answers,
                             text_writer& console) {
  return arguments.empty() ? settings_from_prompts(answers, console)
                           : settings_from_arguments(arguments, console);
}

}  // namespace trellion
