#include "run/stderr_relay.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>

#include "system/io.h"
#include "system/platform.h"

namespace host {

StderrRelay::StderrRelay(bool isWanted) {
  std::array<int, 2> ends{};
  if (!isWanted || ::pipe(ends.data()) != 0) return;
  readEnd_ = outOfTheWay(ends[0]);
  writeEnd_ = outOfTheWay(ends[1]);
  if (readEnd_ >= 0) ::fcntl(readEnd_, F_SETFL, O_NONBLOCK);
  if (writeEnd_ >= 0) widenPipe(writeEnd_);
}

StderrRelay::~StderrRelay() {
  if (readEnd_ >= 0) ::close(readEnd_);
  if (writeEnd_ >= 0) ::close(writeEnd_);
}

std::string StderrRelay::take(bool all) {
  if (readEnd_ < 0) return {};
  std::array<char, 65536> block;
  while (true) {
    const ssize_t count = ::read(readEnd_, block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    held_.append(block.data(), static_cast<std::size_t>(count));
  }
  const std::size_t end = all ? held_.size() : held_.rfind('\n') + 1;
  std::string text = held_.substr(0, end);
  held_.erase(0, end);
  return text;
}

}  // namespace host
