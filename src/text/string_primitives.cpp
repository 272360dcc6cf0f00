#include "text/string_primitives.h"

#include <cstring>
#include <utility>

#include "text/byte_blocks.h"
#include "text/byte_set.h"

namespace text {
namespace {

constexpr ByteSet kFirstWordBytes = kLetters | kDigits | ByteSet{"_#"};

Bytes::Mask areLineEndsOrTabs(const Bytes& bytes) {
  return bytes.are('\n') | bytes.are('\r') | bytes.are('\t');
}

// Appends text to out; each run of white space in kCollapsed becomes one space.
void appendCollapsed(std::string& out, std::string_view text) {
  const std::size_t before = out.size();
  // Whole blocks are written, of which the last may reach beyond the text.
  out.resize(before + text.size() + kBlockBytes);
  char* to = out.data() + before;
  std::size_t from = 0;
  while (from + kBlockBytes < text.size()) {
    const Bytes bytes(text.data() + from), next(text.data() + from + 1);
    const std::size_t plain = firstSet(
        areLineEndsOrTabs(bytes) | (bytes.are(' ') & (next.are(' ') | areLineEndsOrTabs(next))));
    std::memcpy(to, text.data() + from, kBlockBytes);
    to += plain;
    from += plain;
    if (plain == kBlockBytes) continue;
    *to++ = ' ';
    from = findNonMember(text, kCollapsed, from);
  }
  while (from < text.size()) {
    if (kCollapsed(text[from])) {
      *to++ = ' ';
      from = findNonMember(text, kCollapsed, from);
    } else {
      *to++ = text[from++];
    }
  }
  out.resize(static_cast<std::size_t>(to - out.data()));
}

// Whether collapsing would change the text, which must not begin or end with a byte of kCollapsed.
bool hasRunToCollapse(std::string_view text) {
  if (text.size() <= kBlockBytes) {
    return holdsByte(text, areLineEndsOrTabs) || text.find("  ") != std::string_view::npos;
  }
  // Each block is tested together with the block one byte further on.
  const auto isRun = [&](const char* block) {
    const Bytes bytes(block), next(block + 1);
    return areLineEndsOrTabs(bytes) | (bytes.are(' ') & next.are(' '));
  };
  const std::size_t last = text.size() - kBlockBytes - 1;
  Bytes::Mask found = isRun(text.data() + last) | areLineEndsOrTabs(Bytes(text.data() + last + 1));
  for (std::size_t i = 0; i < last; i += kBlockBytes) found |= isRun(text.data() + i);
  return isAny(found);
}

}  // namespace

std::string_view firstWordView(std::string_view text) {
  return text.substr(0, findNonMember(text, kFirstWordBytes));
}

std::string_view lastWordView(std::string_view text) { return text.substr(0, text.rfind(' ')); }

std::string_view trimAndReduceView(std::string_view text, std::string& scratch) {
  // Trimming would remove whatever collapsing leaves at an end, so it may come first.
  const std::string_view trimmed = trimView(text);
  if (!hasRunToCollapse(trimmed)) return trimmed;
  scratch.clear();
  appendCollapsed(scratch, trimmed);
  return scratch;
}

bool matchesOutsideStrings(std::string_view haystack, std::string_view needle) {
  // required: each byte is compared with the whole needle, so a longer needle never matches.
  if (needle.size() != 1 || haystack.find(needle) == std::string_view::npos) return false;
  bool inQuotes = false;
  // Signed, since they may go below zero: a lone ">" hides everything after it.
  std::ptrdiff_t braceDepth = 0, parenDepth = 0, angleDepth = 0;
  for (const char byte : haystack) {
    if (byte == '"') {
      inQuotes = !inQuotes;
      continue;
    }
    if (inQuotes) continue;
    switch (byte) {
      case '{':
        ++braceDepth;
        continue;
      case '}':
        --braceDepth;
        continue;
      case '(':
        ++parenDepth;
        continue;
      case ')':
        --parenDepth;
        continue;
      case '<':
        ++angleDepth;
        continue;
      case '>':
        --angleDepth;
        continue;
      default:
        break;
    }
    if (braceDepth == 0 && parenDepth == 0 && angleDepth == 0 && byte == needle[0]) return true;
  }
  return false;
}

void replaceEach(std::string& text, std::string_view from, std::string_view to) {
  if (from.empty()) return;
  std::size_t hit = text.find(from);
  if (hit == std::string::npos) return;
  std::string replaced;
  std::size_t done = 0;
  for (; hit != std::string::npos; hit = text.find(from, done)) {
    replaced.append(text, done, hit - done).append(to);
    done = hit + from.size();
  }
  replaced.append(text, done);
  text = std::move(replaced);
}

}  // namespace text

bool BothAreSpaces(char a, char b) { return a == b && a == ' '; }

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  text::replaceEach(text, from, to);
}

std::string ltrim(const std::string& text) { return std::string(text::ltrimView(text)); }

std::string rtrim(const std::string& text) { return std::string(text::rtrimView(text)); }

std::string trim(const std::string& text) { return std::string(text::trimView(text)); }

std::string ConvertWhiteSpacesToSingleSpace(std::string text) {
  std::string collapsed;
  text::appendCollapsed(collapsed, text);
  return collapsed;
}

std::string TrimAndReduce(std::string& text) {
  std::string scratch;
  return std::string(text::trimAndReduceView(text, scratch));
}

std::string FirstWord(const std::string& text) { return std::string(text::firstWordView(text)); }

std::string FirstWord(std::string& text) { return std::string(text::firstWordView(text)); }

std::string LastWord(std::string& text) { return std::string(text::lastWordView(text)); }

std::string LastWordNoDots(std::string& text) {
  const std::size_t colon = text.rfind(':');
  // required: the byte before the colon is removed too.
  if (colon != std::string::npos && colon > 0) text.erase(colon - 1);
  const std::size_t space = text.rfind(' ');
  if (space != std::string::npos && space + 1 < text.size()) text.erase(0, space + 1);
  return text;
}

bool Contains(std::string& haystack, std::string needle) {
  return haystack.find(needle) != std::string::npos;
}

bool ContainsWord(std::string& haystack, std::string needle) {
  return Contains(haystack, std::move(needle));
}

bool OutsideStringMatch(std::string haystack, std::string needle) {
  return text::matchesOutsideStrings(haystack, needle);
}

std::int64_t IndexOf(std::string haystack, std::string needle) {
  const std::size_t hit = haystack.find(needle);
  return hit == std::string::npos ? -1 : static_cast<std::int64_t>(hit);
}
