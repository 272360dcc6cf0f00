#include "system/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace host {
namespace {

constexpr std::string_view kReplacementBytes = "\xef\xbf\xbd";

// The bytes that may begin a code point of several, with what may follow right behind: no overlong
// forms, no surrogates, nothing above U+10FFFF. All bytes further on are 0x80 to 0xbf.
struct Lead {
  unsigned char first;
  unsigned char last;
  std::size_t bytes;
  unsigned char secondFirst;
  unsigned char secondLast;
};

constexpr std::array kLeads = {Lead{0xc2, 0xdf, 2, 0x80, 0xbf}, Lead{0xe0, 0xe0, 3, 0xa0, 0xbf},
                               Lead{0xe1, 0xec, 3, 0x80, 0xbf}, Lead{0xed, 0xed, 3, 0x80, 0x9f},
                               Lead{0xee, 0xef, 3, 0x80, 0xbf}, Lead{0xf0, 0xf0, 4, 0x90, 0xbf},
                               Lead{0xf1, 0xf3, 4, 0x80, 0xbf}, Lead{0xf4, 0xf4, 4, 0x80, 0x8f}};

struct Range {
  char32_t first;
  char32_t last;
};

// The common ones; a terminal's own tables are finer and change from year to year.
constexpr std::array kNoColumn = {Range{0x0300, 0x036f}, Range{0x200b, 0x200f},
                                  Range{0x20d0, 0x20ff}, Range{0xfe00, 0xfe0f},
                                  Range{0xfe20, 0xfe2f}};
constexpr std::array kTwoColumns = {
    Range{0x1100, 0x115f},   Range{0x2e80, 0x303e},   Range{0x3041, 0xa4cf},  Range{0xac00, 0xd7a3},
    Range{0xf900, 0xfaff},   Range{0xfe30, 0xfe6f},   Range{0xff00, 0xff60},  Range{0xffe0, 0xffe6},
    Range{0x1f300, 0x1f64f}, Range{0x1f900, 0x1f9ff}, Range{0x20000, 0x3fffd}};

template <typename Ranges>
bool holds(const Ranges& ranges, char32_t codePoint) {
  return std::any_of(ranges.begin(), ranges.end(), [codePoint](const Range& range) {
    return range.first <= codePoint && codePoint <= range.last;
  });
}

}  // namespace

CodePoint codePointAt(std::string_view text, std::size_t offset) {
  const auto byteAt = [&](std::size_t place) {
    return static_cast<unsigned char>(text[offset + place]);
  };
  const unsigned char first = byteAt(0);
  if (first < 0x80) return {first, 1, true};
  const auto* const lead = std::find_if(kLeads.begin(), kLeads.end(), [first](const Lead& row) {
    return row.first <= first && first <= row.last;
  });
  if (lead == kLeads.end()) return {kReplacement, 1, false};
  char32_t value = first & (0x7fU >> lead->bytes);
  for (std::size_t place = 1; place < lead->bytes; ++place) {
    const unsigned char from = place == 1 ? lead->secondFirst : 0x80;
    const unsigned char to = place == 1 ? lead->secondLast : 0xbf;
    const bool follows =
        offset + place < text.size() && from <= byteAt(place) && byteAt(place) <= to;
    if (!follows) return {kReplacement, place, false};
    value = value << 6U | (byteAt(place) & 0x3fU);
  }
  return {value, lead->bytes, true};
}

std::size_t findHighByte(std::string_view text, std::size_t from) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::uint64_t word = 0;
  while (from + sizeof word <= text.size()) {
    std::memcpy(&word, text.data() + from, sizeof word);
    if ((word & kHighBits) != 0) break;
    from += sizeof word;
  }
  while (from < text.size() && static_cast<unsigned char>(text[from]) < 0x80) ++from;
  return from;
}

bool isUtf8(std::string_view text) {
  for (std::size_t at = findHighByte(text, 0); at < text.size(); at = findHighByte(text, at)) {
    const CodePoint codePoint = codePointAt(text, at);
    if (!codePoint.valid) return false;
    at += codePoint.bytes;
  }
  return true;
}

std::string withReplacements(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const CodePoint codePoint = codePointAt(text, at);
    result += codePoint.valid ? text.substr(at, codePoint.bytes) : kReplacementBytes;
    at += codePoint.bytes;
  }
  return result;
}

std::size_t columnsOf(char32_t codePoint) {
  if (holds(kNoColumn, codePoint)) return 0;
  return holds(kTwoColumns, codePoint) ? 2 : 1;
}

}  // namespace host
