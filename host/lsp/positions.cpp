#include "lsp/positions.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "system/utf8.h"

namespace host::lsp {
namespace {

constexpr char32_t kFirstOfTwoUnits = 0x10000;

struct Step {
  std::size_t bytes;
  std::uint32_t units;
};

Step stepAt(std::string_view text, std::size_t at, Encoding encoding) {
  if (static_cast<unsigned char>(text[at]) < 0x80) return {1, 1};
  const CodePoint point = codePointAt(text, at);
  if (encoding == Encoding::kUtf8) return {point.bytes, static_cast<std::uint32_t>(point.bytes)};
  return {point.bytes, point.value >= kFirstOfTwoUnits ? 2U : 1U};
}

std::size_t findByte(std::string_view text, char byte) {
  if (text.empty()) return 0;
  const void* const found = std::memchr(text.data(), byte, text.size());
  if (found == nullptr) return text.size();
  return static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

// The next LF or CR at or after the offset, or the text's end. memchr finds one kind of byte, and
// is far faster than a loop that looks for two; the windows grow so that a text that has only the
// other kind is not searched to its end for every line.
std::size_t findLineEnd(std::string_view text, std::size_t from) {
  for (std::size_t window = 128; from < text.size(); window *= 2) {
    const std::string_view part = text.substr(from, window);
    const std::size_t feed = findByte(part, '\n');
    const std::size_t end = findByte(part.substr(0, feed), '\r');
    from += end;
    if (end < part.size()) return from;
  }
  return text.size();
}

}  // namespace

bool isWordByte(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '_' || byte == '$' ||
         static_cast<unsigned char>(byte) >= 0x80;
}

std::uint32_t unitsOf(std::string_view text, Encoding encoding) {
  if (encoding == Encoding::kUtf8) return static_cast<std::uint32_t>(text.size());
  std::uint32_t units = 0;
  for (std::size_t at = 0;;) {
    const std::size_t end = findHighByte(text, at);
    units += static_cast<std::uint32_t>(end - at);
    if (end == text.size()) return units;
    const Step step = stepAt(text, end, encoding);
    at = end + step.bytes;
    units += step.units;
  }
}

std::size_t bytesOf(std::string_view line, std::uint32_t units, Encoding encoding) {
  std::size_t at = 0;
  for (std::uint32_t passed = 0; at < line.size();) {
    const Step step = stepAt(line, at, encoding);
    passed += step.units;
    if (passed > units) break;
    at += step.bytes;
  }
  return at;
}

std::size_t nextLine(std::string_view text, std::size_t from) {
  const std::size_t end = findLineEnd(text, from);
  if (end == text.size()) return std::string_view::npos;
  return end + (text.substr(end).starts_with("\r\n") ? 2 : 1);
}

std::string_view lineAt(std::string_view text, std::size_t start) {
  return text.substr(start, findLineEnd(text, start) - start);
}

std::size_t offsetOf(std::string_view text, Position position, Encoding encoding) {
  std::size_t start = 0;
  for (std::uint32_t line = 0; line < position.line; ++line) {
    start = nextLine(text, start);
    if (start == std::string_view::npos) return text.size();
  }
  return start + bytesOf(lineAt(text, start), position.character, encoding);
}

void replaceRange(std::string& text, Range range, std::string_view with, Encoding encoding) {
  std::size_t begin = offsetOf(text, range.start, encoding);
  std::size_t end = offsetOf(text, range.end, encoding);
  if (begin > end) std::swap(begin, end);
  text.replace(begin, end - begin, with);
}

}  // namespace host::lsp
