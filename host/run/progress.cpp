#include "run/progress.h"

#include <unistd.h>

#include "system/display_text.h"
#include "system/io.h"
#include "system/platform.h"
#include "system/signals.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kInterval{100};

}  // namespace

Progress::Progress(bool isWanted, std::uint64_t fileCount)
    : fileCount_(fileCount),
      width_(isWanted ? terminalWidth(STDERR_FILENO) : 0),
      next_(std::chrono::steady_clock::now() + kInterval) {}

void Progress::show(std::uint64_t done, std::uint64_t failed, std::string_view path) {
  if (!isShown()) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  std::string text = std::to_string(done) + "/" + std::to_string(fileCount_);
  if (failed > 0) text += ", " + std::to_string(failed) + " failed";
  text.append(": ").append(path);
  std::string line(kEraseLine);
  appendDisplay(line, text, true, width_ - 1);  // a full line would move the cursor to the next
  isThere_ = true;
  notePassingLine(true);
  writeAll(STDERR_FILENO, line);
}

void Progress::erase() {
  if (!isThere_) return;
  writeAll(STDERR_FILENO, kEraseLine);
  notePassingLine(false);
  isThere_ = false;
}

}  // namespace host
