#include "sources/wild_pattern.h"

#include <algorithm>
#include <array>
#include <utility>

namespace host {
namespace {

constexpr std::string_view kSpecialBytes = "*?[\\";

// The parts of "**" and a slash: kMaySkip, kDoubleStar and the slash.
constexpr std::size_t kSpanParts = 3;

unsigned char code(char byte) { return static_cast<unsigned char>(byte); }

bool isUpper(char byte) { return byte >= 'A' && byte <= 'Z'; }
bool isLower(char byte) { return byte >= 'a' && byte <= 'z'; }
bool isAlpha(char byte) { return isUpper(byte) || isLower(byte); }
bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }
bool isAlnum(char byte) { return isAlpha(byte) || isDigit(byte); }
bool isGraph(char byte) { return byte > ' ' && byte < 0x7f; }

struct ByteClass {
  std::string_view name;
  bool (*has)(char byte);
};

// In git white space is no more than this, and no byte from 0x80 up is in any class.
constexpr std::array kClasses = {
    ByteClass{"alnum", isAlnum},
    ByteClass{"alpha", isAlpha},
    ByteClass{"blank", [](char byte) { return byte == ' ' || byte == '\t'; }},
    ByteClass{"cntrl", [](char byte) { return code(byte) < code(' ') || byte == 0x7f; }},
    ByteClass{"digit", isDigit},
    ByteClass{"graph", isGraph},
    ByteClass{"lower", isLower},
    ByteClass{"print", [](char byte) { return byte == ' ' || isGraph(byte); }},
    ByteClass{"punct", [](char byte) { return isGraph(byte) && !isAlnum(byte); }},
    ByteClass{
        "space",
        [](char byte) { return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r'; }},
    ByteClass{"upper", isUpper},
    ByteClass{"xdigit", [](char byte) {
                return isDigit(byte) || (byte >= 'a' && byte <= 'f') ||
                       (byte >= 'A' && byte <= 'F');
              }}};

char toLower(char byte) { return isUpper(byte) ? static_cast<char>(byte - 'A' + 'a') : byte; }

// Reads what stands between the brackets of a set.
class SetReader {
 public:
  using ByteSet = std::bitset<256>;

  // at is the offset behind the opening bracket.
  SetReader(std::string_view pattern, std::size_t at, bool ignoresCase)
      : pattern_(pattern), at_(at), ignoresCase_(ignoresCase) {}

  // Returns false for a set that git calls malformed.
  bool read() {
    const bool isNegated = byteAt(at_) == '!' || byteAt(at_) == '^';
    if (isNegated) ++at_;
    char rangeStart = 0;  // the byte before a hyphen, or 0
    do {                  // a bracket that comes first is an element
      if (at_ >= pattern_.size() || !readElement(rangeStart)) return false;
    } while (byteAt(at_) != ']');
    ++at_;
    if (isNegated) set_.flip();
    return true;
  }

  const ByteSet& set() const { return set_; }
  std::size_t end() const { return at_; }  // behind the closing bracket

 private:
  char byteAt(std::size_t offset) const {
    return offset < pattern_.size() ? pattern_[offset] : '\0';
  }

  bool readElement(char& rangeStart) {
    char byte = pattern_[at_];
    if (byte == '-' && rangeStart != '\0' && byteAt(at_ + 1) != '\0' && byteAt(at_ + 1) != ']') {
      ++at_;
      return readRange(std::exchange(rangeStart, '\0'));
    }
    if (byte == '[' && byteAt(at_ + 1) == ':') {
      const std::size_t end = pattern_.find(']', at_ + 2);
      if (end == std::string_view::npos) return false;
      if (end > at_ + 2 && pattern_[end - 1] == ':') {
        rangeStart = '\0';
        return readClass(end);
      }
    }
    if (byte == '\\') {
      if (++at_ >= pattern_.size()) return false;
      byte = pattern_[at_];
    }
    set_.set(code(byte));
    rangeStart = byte;
    ++at_;
    return true;
  }

  // At the last byte of the range, or the backslash before it.
  bool readRange(char first) {
    if (pattern_[at_] == '\\' && ++at_ >= pattern_.size()) return false;
    const char last = pattern_[at_++];
    for (unsigned byte = code(first); byte <= code(last); ++byte) {
      set_.set(byte);
      // The text is in lower case by then.
      if (ignoresCase_) set_.set(code(toLower(static_cast<char>(byte))));
    }
    return true;
  }

  bool readClass(std::size_t end) {
    const std::string_view name = pattern_.substr(at_ + 2, end - 1 - (at_ + 2));
    const auto* const found =
        std::find_if(kClasses.begin(), kClasses.end(),
                     [&](const ByteClass& known) { return known.name == name; });
    if (found == kClasses.end()) return false;
    for (unsigned byte = 0; byte < set_.size(); ++byte) {
      const char plain = static_cast<char>(byte);
      const bool isUpperToo = ignoresCase_ && name == "upper" && isLower(plain);
      if (found->has(plain) || isUpperToo) set_.set(byte);
    }
    at_ = end + 1;
    return true;
  }

  std::string_view pattern_;
  std::size_t at_;
  bool ignoresCase_;
  ByteSet set_;
};

}  // namespace

WildPattern::WildPattern(std::string_view pattern, Subject subject, bool ignoresCase)
    : isForPath_(subject == Subject::kPath), ignoresCase_(ignoresCase) {
  const std::size_t special = std::min(pattern.find_first_of(kSpecialBytes), pattern.size());
  for (const char byte : pattern.substr(0, special)) prefix_ += folded(byte);
  compile(pattern.substr(special));
  findTail();
}

char WildPattern::folded(char byte) const { return ignoresCase_ ? toLower(byte) : byte; }

void WildPattern::compile(std::string_view pattern) {
  for (std::size_t at = 0; at < pattern.size() && !isMalformed_;) {
    const char byte = pattern[at];
    if (byte == '*') {
      const std::size_t end = std::min(pattern.find_first_not_of('*', at), pattern.size());
      addStars(pattern, at, end);
      at = end;
    } else if (byte == '[') {
      at = addSet(pattern, at + 1);
    } else if (byte == '?') {
      parts_.push_back({.kind = Kind::kSet, .set = sets_.size()});
      sets_.push_back(ByteSet().set());
      ++at;
    } else if (byte == '\\') {
      // git does not fold the case of what is behind a backslash, so it may match nothing.
      isMalformed_ = at + 1 == pattern.size();
      if (!isMalformed_) parts_.push_back({.kind = Kind::kByte, .byte = pattern[at + 1]});
      at += 2;
    } else {
      parts_.push_back({.kind = Kind::kByte, .byte = folded(byte)});
      ++at;
    }
  }
  if (isForPath_) {
    for (ByteSet& set : sets_) set.reset(code('/'));
  }
}

void WildPattern::addStars(std::string_view pattern, std::size_t start, std::size_t end) {
  if (!isForPath_) {
    parts_.push_back({.kind = Kind::kDoubleStar});
    return;
  }
  const std::string_view rest = pattern.substr(end);
  const bool spansDirectories = end - start >= 2 && (start == 0 || pattern[start - 1] == '/') &&
                                (rest.empty() || rest.front() == '/' || rest.starts_with("\\/"));
  if (spansDirectories && rest.starts_with('/')) parts_.push_back({.kind = Kind::kMaySkip});
  parts_.push_back({.kind = spansDirectories ? Kind::kDoubleStar : Kind::kStar});
}

// Returns the offset behind the set.
std::size_t WildPattern::addSet(std::string_view pattern, std::size_t opening) {
  SetReader reader(pattern, opening, ignoresCase_);
  isMalformed_ = !reader.read();
  parts_.push_back({.kind = Kind::kSet, .set = sets_.size()});
  sets_.push_back(reader.set());
  return reader.end();
}

void WildPattern::findTail() {
  std::size_t start = parts_.size();
  while (start > 0 && parts_[start - 1].kind == Kind::kByte) --start;
  if (start >= 2 && parts_[start - 2].kind == Kind::kMaySkip) start = start - 2 + kSpanParts;
  for (std::size_t at = start; at < parts_.size(); ++at) tail_ += parts_[at].byte;
}

std::optional<char> WildPattern::lastByte() const {
  if (!tail_.empty()) return tail_.back();
  if (parts_.empty() && !prefix_.empty()) return prefix_.back();
  return std::nullopt;
}

bool WildPattern::matches(std::string_view text) const {
  if (isMalformed_ || text.size() < prefix_.size() + tail_.size()) return false;
  const auto isSame = [this](char left, char right) { return left == folded(right); };
  if (!std::equal(prefix_.begin(), prefix_.end(), text.begin(), isSame)) return false;
  if (!std::equal(tail_.rbegin(), tail_.rend(), text.rbegin(), isSame)) return false;
  const std::size_t partsBeforeTail = parts_.size() - tail_.size();
  text.remove_prefix(prefix_.size());
  if (partsBeforeTail == 0) return text.size() == tail_.size();
  if (partsBeforeTail == 1 && parts_.front().kind == Kind::kDoubleStar) return true;
  return run(text);
}

bool WildPattern::consumes(const Part& part, char byte) const {
  switch (part.kind) {
    case Kind::kByte:
      return part.byte == folded(byte);
    case Kind::kSet:
      return sets_[part.set][code(folded(byte))];
    case Kind::kStar:
      return byte != '/';
    case Kind::kDoubleStar:
      return true;
    case Kind::kMaySkip:
      break;
  }
  return false;
}

// Follows all ways through the pattern at once: a part is active if what comes before it can match
// the text read so far.
bool WildPattern::run(std::string_view text) const {
  std::vector<char> active(parts_.size() + 1);
  std::vector<char> next(active.size());
  active.front() = 1;
  followEmptyParts(active);
  for (const char byte : text) {
    std::fill(next.begin(), next.end(), 0);
    for (std::size_t at = 0; at < parts_.size(); ++at) {
      if (active[at] == 0 || !consumes(parts_[at], byte)) continue;
      const bool stays = parts_[at].kind == Kind::kStar || parts_[at].kind == Kind::kDoubleStar;
      next[stays ? at : at + 1] = 1;
    }
    followEmptyParts(next);
    active.swap(next);
  }
  return active.back() != 0;
}

void WildPattern::followEmptyParts(std::vector<char>& active) const {
  for (std::size_t at = 0; at < parts_.size(); ++at) {
    const Kind kind = parts_[at].kind;
    if (active[at] == 0 || kind == Kind::kByte || kind == Kind::kSet) continue;
    active[at + 1] = 1;
    if (kind == Kind::kMaySkip) active[at + kSpanParts] = 1;
  }
}

}  // namespace host
