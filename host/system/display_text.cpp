#include "system/display_text.h"

#include <algorithm>

#include "system/utf8.h"

namespace host {
namespace {

constexpr std::string_view kEllipsis = "...";

// The escape of one byte or code point; its digits make it longer than any code point's own bytes.
void appendHex(std::string& out, std::string_view start, unsigned value, unsigned digits) {
  out += start;
  while (digits-- > 0) out += "0123456789abcdef"[value >> (4 * digits) & 0xfU];
}

bool isControl(char32_t value) { return value < 0x20 || (0x7f <= value && value <= 0x9f); }

bool turnsDirection(char32_t value) {
  return value == 0x200e || value == 0x200f || (0x202a <= value && value <= 0x202e) ||
         (0x2066 <= value && value <= 0x2069);
}

// Appends what stands for a code point that is better not written as such; false for others.
bool appendEscape(std::string& out, char32_t value) {
  if (!isControl(value) && !turnsDirection(value)) return false;
  appendHex(out, value < 0x80 ? "\\x" : "\\u", value, value < 0x80 ? 2 : 4);
  return true;
}

// Appends what stands for the code point and gives its columns.
std::size_t appendOne(std::string& out, std::string_view bytes, const CodePoint& codePoint,
                      bool escapeControlBytes) {
  const std::size_t start = out.size();
  const char32_t value = codePoint.value;
  if (value == '\n') {
    out += "\\n";
  } else if (value == '\r') {
    out += "\\r";
  } else if (value == '\t') {
    out += "\\t";
  } else if (escapeControlBytes && !codePoint.valid) {
    for (const char byte : bytes) appendHex(out, "\\x", static_cast<unsigned char>(byte), 2);
  } else if (!escapeControlBytes || !appendEscape(out, value)) {
    out += bytes;
    return columnsOf(value);
  }
  return out.size() - start;
}

}  // namespace

std::size_t appendDisplay(std::string& out, std::string_view text, bool escapeControlBytes,
                          std::size_t limit) {
  const std::size_t ellipsis = std::min(limit, kEllipsis.size());
  std::size_t columns = 0;
  std::size_t cut = out.size();  // where an ellipsis would still have room
  std::size_t cutColumns = 0;
  for (std::size_t at = 0; at < text.size();) {
    const CodePoint codePoint = codePointAt(text, at);
    columns += appendOne(out, text.substr(at, codePoint.bytes), codePoint, escapeControlBytes);
    if (columns > limit) {
      out.resize(cut);
      out += kEllipsis.substr(0, ellipsis);
      return cutColumns + ellipsis;
    }
    if (columns + ellipsis <= limit) {
      cut = out.size();
      cutColumns = columns;
    }
    at += codePoint.bytes;
  }
  return columns;
}

std::string onOneLine(std::string_view text) {
  std::string line;
  for (std::size_t at = 0; at < text.size();) {
    const CodePoint codePoint = codePointAt(text, at);
    if (!codePoint.valid || !appendEscape(line, codePoint.value)) {
      line += text.substr(at, codePoint.bytes);
    }
    at += codePoint.bytes;
  }
  return line;
}

}  // namespace host
