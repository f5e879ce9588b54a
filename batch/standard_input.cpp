#include "batch/standard_input.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>

#include "files.h"

namespace trellion::batch {

std::string read_standard_input(const interruption& interrupted) {
  std::string text;
  std::array<char, std::size_t{1} << 16> buffer{};
  while (true) {
    std::array<pollfd, 2> watched = {
        {{STDIN_FILENO, POLLIN, 0}, {interrupted.descriptor(), POLLIN, 0}}};
    ::poll(watched.data(), watched.size(), -1);
    if (watched[1].revents != 0) throw run_error("interrupted");
    if (watched[0].revents == 0) continue;
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count == 0) return text;
    if (count > 0) {
      text.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR && errno != EAGAIN) {
      throw system_failure("read", "standard input", errno);
    }
  }
}

}  // namespace trellion::batch
