#include "pdf/workplace.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <system_error>

namespace trellion::pdf {

workplace::workplace(const std::filesystem::path& parent, const batch::interruption& interrupted)
    : interrupted_(interrupted), directory_(parent), farewell_(batch::make_pipe()) {
  watcher_ = std::thread([this] { watch(); });
}

workplace::~workplace() {
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = ::write(farewell_.write.get(), &byte, 1);
  watcher_.join();
}

void workplace::watch() {
  std::array<pollfd, 2> awaited = {pollfd{interrupted_.descriptor(), POLLIN, 0},
                                   pollfd{farewell_.read.get(), POLLIN, 0}};
  while (awaited[0].revents == 0 && awaited[1].revents == 0) {
    ::poll(awaited.data(), awaited.size(), -1);
  }
  if (awaited[0].revents == 0) return;
  std::error_code ignored;
  std::filesystem::remove_all(path(), ignored);
  interrupted_.end_by_signal();
}

}  // namespace trellion::pdf
