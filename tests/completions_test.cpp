#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "support.h"

namespace trellion::testing {
namespace {

/// A shell at a terminal of its own, in which the programs are functions that show what they get.
class interactive_shell {
 public:
  interactive_shell(const std::vector<const char*>& command, const scratch_directory& directory) {
    process_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (process_ == 0) {
      const std::string place = directory.path();
      std::vector<char*> arguments(command.size() + 1);
      std::ranges::transform(command, arguments.begin(),
                             [](const char* argument) { return const_cast<char*>(argument); });
      for (const auto& [name, value] : {std::pair{"TERM", "dumb"},
                                        {"LC_ALL", "C.UTF-8"},
                                        {"HOME", place.c_str()},
                                        {"ZDOTDIR", place.c_str()}}) {
        if (setenv(name, value, 1) != 0) _exit(1);
      }
      if (chdir(place.c_str()) == 0) execvp(arguments.front(), arguments.data());
      _exit(1);
    }
    std::string functions = "shown() { printf '{%s}' \"$@\"; echo; }\n";
    for (const char* program : {"", "-batch", "-pdf", "-frames"}) {
      functions += std::string("trellion") + program + "() { shown \"$@\"; }\n";
    }
    directory.write("functions", functions);
    (void)answer(". ./functions; shown ready");
  }
  ~interactive_shell() {
    close(terminal_);  // hangs up
    waitpid(process_, nullptr, 0);
  }
  interactive_shell(const interactive_shell&) = delete;
  interactive_shell& operator=(const interactive_shell&) = delete;

  /// What a program gets for a line, each word in braces. The line is typed as it stands.
  std::string answer(const std::string& line) {
    const std::string typed = line + " =\n";
    if (write(terminal_, typed.data(), typed.size()) != static_cast<ssize_t>(typed.size())) {
      return "not typed";
    }
    std::string seen;
    const std::string_view last = "{=}";
    for (std::size_t end = 0; (end = seen.find(last)) == std::string::npos;) {
      pollfd ready = {terminal_, POLLIN, 0};
      char buffer[4096];
      constexpr int patience = 60'000;
      const ssize_t n = poll(&ready, 1, patience) == 1 ? read(terminal_, buffer, sizeof buffer) : 0;
      if (n <= 0) return "no answer: " + seen;
      seen.append(buffer, static_cast<std::size_t>(n));
    }
    seen.resize(seen.find(last));
    return seen.substr(seen.rfind('\n') + 1);
  }

 private:
  int terminal_ = -1;
  pid_t process_ = -1;
};

bool is_there(const char* command, const scratch_directory& directory) {
  return shell(std::string("command -v ") + command, directory).status == 0;
}

/// A folder in which one name only fits what is typed below, once results are left out.
void fill(const scratch_directory& directory) {
  for (const char* name : {"Fläche eins.eps", "Fläche eins_r.eps", "old.ps", "plot.pdf",
                           "plot_r.pdf", "own_r.eps", "text.txt", "script"}) {
    directory.write(name, "");
  }
  std::filesystem::create_directories(directory.path() / "many");
  directory.write("many/deep.EPS", "");
}

void expect_completed(interactive_shell& shell) {
  // Twice, since the first use of a completion may load it and the second find it changed.
  for (int round = 1; round <= 2; ++round) {
    EXPECT_EQ(shell.answer("trellion Fl\t"), "{Fläche eins.eps}") << round;
    EXPECT_EQ(shell.answer("trellion ol\t"), "{old.ps}") << round;
    EXPECT_EQ(shell.answer("trellion-batch --no-v\t"), "{--no-verify}") << round;
    EXPECT_EQ(shell.answer("trellion-batch -q Fl\t pl\t m\tdee\t"),
              "{-q}{Fläche eins.eps}{plot.pdf}{many/deep.EPS}")
        << round;
    EXPECT_EQ(shell.answer("trellion-batch own\t"), "{own_r.eps}") << "no result of a figure";
    EXPECT_EQ(shell.answer("trellion-batch --report sc\t"), "{--report}{script}") << round;
    EXPECT_EQ(shell.answer("trellion-pdf --stri\t pl\t"), "{--strict}{plot.pdf}") << round;
    EXPECT_EQ(shell.answer("trellion-frames Fl\t ma\tx"), "{Fläche eins.eps}{many/x}") << round;
  }
}

TEST(completions, of_bash) {
  const scratch_directory directory;
  if (!is_there("bash", directory)) GTEST_SKIP() << "bash is not installed";
  fill(directory);
  interactive_shell bash({"bash", "--norc", "--noprofile", "-i"}, directory);
  (void)bash.answer(". '" TRELLION_SOURCE "/completions/trellion.bash'; shown loaded");
  expect_completed(bash);
}

TEST(completions, of_bash_that_loads_them_by_itself) {
  const scratch_directory directory;
  const char* loader = "/usr/share/bash-completion/bash_completion";
  if (access(loader, R_OK) != 0) GTEST_SKIP() << "bash-completion is not installed";
  fill(directory);
  const auto completions = directory.path() / ".local/share/bash-completion/completions";
  std::filesystem::create_directories(completions);
  for (const char* name : {"trellion", "trellion-batch", "trellion-pdf", "trellion-frames"}) {
    std::filesystem::copy_file(TRELLION_SOURCE "/completions/trellion.bash", completions / name);
  }
  interactive_shell bash({"bash", "--norc", "--noprofile", "-i"}, directory);
  (void)bash.answer(std::string("unset XDG_DATA_HOME; . ") + loader + "; shown loaded");
  expect_completed(bash);
}

TEST(completions, of_zsh) {
  const scratch_directory directory;
  if (!is_there("zsh", directory)) GTEST_SKIP() << "zsh is not installed";
  fill(directory);
  interactive_shell zsh({"zsh", "-f", "-i"}, directory);
  (void)zsh.answer("fpath=('" TRELLION_SOURCE
                   "/completions' $fpath); autoload -Uz compinit; "
                   "compinit -u -D; shown loaded");
  expect_completed(zsh);
}

}  // namespace
}  // namespace trellion::testing
