#include "progress.h"

#include <unistd.h>

#include "output.h"
#include "platform.h"
#include "run_end.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kInterval{100};

// The text cut to so many columns. A byte that goes on with a character of UTF-8 takes none.
std::string_view cut(std::string_view text, std::size_t columns) {
  std::size_t end = 0;
  for (; end < text.size(); ++end) {
    const bool startsCharacter = (static_cast<unsigned char>(text[end]) & 0xc0U) != 0x80U;
    if (startsCharacter && columns-- == 0) break;
  }
  return text.substr(0, end);
}

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
  text += ": " + onOneLine(path);
  isThere_ = true;
  notePassingLine(true);
  writeAll(STDERR_FILENO, kEraseLine + std::string(cut(text, width_ - 1)));
}

void Progress::erase() {
  if (!isThere_) return;
  writeAll(STDERR_FILENO, kEraseLine);
  notePassingLine(false);
  isThere_ = false;
}

}  // namespace host
