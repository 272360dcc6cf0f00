#include "outline/quick_check.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "outline/limits.h"

namespace host::outline {
namespace {

enum Plain : std::uint8_t { kPlainInCode = 1, kPlainInString = 2, kPlainInComment = 4 };

constexpr std::array<std::uint8_t, 256> kPlain = [] {
  std::array<std::uint8_t, 256> table{};
  for (std::size_t byte = 0; byte < table.size(); ++byte) {
    const auto isNone = [byte](std::string_view bytes) {
      return bytes.find(static_cast<char>(byte)) == std::string_view::npos;
    };
    if (isNone("/'\"")) table[byte] |= kPlainInCode;
    if (isNone("'\"\\")) table[byte] |= kPlainInString;
    if (isNone("/*")) table[byte] |= kPlainInComment;
  }
  return table;
}();

// Follows comments and strings as the cleaner of the module does, in text without carriage returns,
// page comments and markers.
class CommentSkimmer {
 public:
  explicit CommentSkimmer(std::string_view text) : text_(text) {}

  bool endsInComment() {
    while (at_ < text_.size()) {
      skip(kPlainInCode);
      if (at_ == text_.size()) return false;
      const char byte = text_[at_++];
      if (byte != '/') {
        skipString(byte);
      } else if (next() == '/') {
        at_ = std::min(text_.find('\n', at_), text_.size());
      } else if (next() == '*') {
        if (!skipComment()) return true;
      }
    }
    return false;
  }

 private:
  char next() const { return at_ < text_.size() ? text_[at_] : '\0'; }

  void skip(Plain plain) {
    while (at_ < text_.size() && (kPlain[static_cast<unsigned char>(text_[at_])] & plain) != 0) {
      ++at_;
    }
  }

  // The module copies the byte behind the beginning and the end of a comment, and behind a
  // backslash, whatever it is; bytes that are no ASCII do not count.
  void skipCopied() {
    const auto isCopied = [](char byte) {
      return (byte >= ' ' && byte <= '~') || byte == '\n' || byte == '\t';
    };
    while (at_ < text_.size() && !isCopied(text_[at_])) ++at_;
    if (at_ < text_.size()) ++at_;
  }

  void skipString(char quote) {
    while (at_ < text_.size()) {
      skip(kPlainInString);
      if (at_ == text_.size()) return;
      const char byte = text_[at_++];
      if (byte == quote) return;
      if (byte == '\\') skipCopied();
    }
  }

  // False if it has no end.
  bool skipComment() {
    while (true) {
      skip(kPlainInComment);
      if (at_ >= text_.size()) return false;
      const char previous = text_[at_ - 1];
      const char byte = text_[at_++];
      if (byte == '*' && previous == '/') skipCopied();
      if (byte == '/' && previous == '*') {
        skipCopied();
        return true;
      }
    }
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

bool areLinesWithinLimits(std::string_view text) {
  std::int64_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++count) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string_view line = text.substr(at, end - at);
    if (line.size() > kMaxLineBytes) return false;
    if (line.size() > static_cast<std::size_t>(kMaxBraces) &&
        std::max(std::count(line.begin(), line.end(), '{'),
                 std::count(line.begin(), line.end(), '}')) > kMaxBraces) {
      return false;
    }
    at = end + 1;
  }
  return count <= kMaxScriptLines;
}

}  // namespace

bool isSurelyReadWhole(std::string_view source) {
  const auto holds = [source](std::string_view text) {
    return source.find(text) != std::string_view::npos;
  };
  return source.size() <= kMaxPageBytes && !holds("\r") && !holds("<!--") && !holds(kMarker) &&
         areLinesWithinLimits(source) && !CommentSkimmer(source).endsInComment();
}

}  // namespace host::outline
