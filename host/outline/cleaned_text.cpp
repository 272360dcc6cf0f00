#include "outline/cleaned_text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "outline/limits.h"

namespace host::outline {
namespace {

// Bytes of which a run may be taken at once, by what the text is.
enum Plain : std::uint8_t {
  kPlainInPage = 1,
  kPlainInPageComment = 2,
  kPlainInCode = 4,
  kPlainInString = 8,
  kPlainInLineComment = 16,
  kPlainInBlockComment = 32,
};

constexpr std::array<std::uint8_t, 256> kPlain = [] {
  std::array<std::uint8_t, 256> table{};
  const auto fill = [&table](Plain plain, std::size_t first, std::size_t last,
                             std::string_view others) {
    for (std::size_t byte = first; byte <= last; ++byte) {
      if (others.find(static_cast<char>(byte)) == std::string_view::npos) table[byte] |= plain;
    }
  };
  fill(kPlainInPage, 0, 255, "<\r\n\t");
  fill(kPlainInPageComment, 0, 255, "-\r\n");
  fill(kPlainInCode, ' ', '~', "T;[/'\"}");
  fill(kPlainInString, ' ', '~', "'\"\\;[");
  fill(kPlainInLineComment, ' ', '~', ";");
  fill(kPlainInBlockComment, ' ', '~', ";*/");
  return table;
}();

// Where the run ends that begins there.
std::size_t plainEnd(std::string_view text, std::size_t at, Plain plain) {
  while (at < text.size() && (kPlain[static_cast<unsigned char>(text[at])] & plain) != 0) ++at;
  return at;
}

constexpr std::string_view kPageCommentStart = "<!--";

// Drops page comments but for their line feeds, and makes line feeds of carriage returns. lines
// stays empty if they are those of the source. openComment becomes the line of a comment that has
// no end, or 0.
std::string dropPageComments(std::string_view source, std::vector<std::int32_t>& lines,
                             std::int32_t& openComment) {
  openComment = 0;
  // Most texts have neither.
  if (source.find('\r') == std::string_view::npos &&
      source.find(kPageCommentStart) == std::string_view::npos) {
    std::string text(source.size(), '\0');
    std::transform(source.begin(), source.end(), text.begin(),
                   [](char byte) { return byte == '\t' ? ' ' : byte; });
    return text;
  }
  std::string text;
  text.reserve(source.size());
  lines.push_back(1);
  std::int32_t line = 1;
  bool inComment = false;
  for (std::size_t at = 0; at < source.size();) {
    const std::size_t end = plainEnd(source, at, inComment ? kPlainInPageComment : kPlainInPage);
    if (!inComment) text.append(source.substr(at, end - at));
    at = end;
    if (at == source.size()) break;
    const std::string_view rest = source.substr(at, kPageCommentStart.size());
    if (!inComment && rest == kPageCommentStart) {
      inComment = true;
      openComment = line;
      at += kPageCommentStart.size();
      continue;
    }
    if (inComment && rest.starts_with("-->")) {
      inComment = false;
      openComment = 0;
      at += 3;
      continue;
    }
    const char byte = source[at++];
    if (byte == '\r' && rest.substr(1, 1) != "\n") ++line;
    if (byte == '\n') ++line;
    if (byte == '\n' || (byte == '\r' && !inComment)) {
      text += '\n';
      lines.push_back(line);
    } else if (!inComment) {
      text += byte == '\t' ? ' ' : byte;
    }
  }
  return text;
}

// Drops the comments of scripts, as a machine that knows two kinds of strings and no regular
// expressions, over text of any kind.
class CommentDropper {
 public:
  CommentDropper(const std::string& text, std::vector<std::int32_t>& lines)
      : text_(text), lines_(lines) {}

  std::string run() {
    // Only a marker takes line feeds along.
    const bool keepsLines = lines_.empty() && text_.find(kMarker) == std::string::npos;
    std::vector<std::int32_t> kept;
    if (!keepsLines) kept.push_back(sourceLine());
    kept_.reserve(text_.size());
    for (std::size_t at = 0; at < text_.size(); ++at) {
      at = takePlain(at);
      if (at == text_.size()) break;
      const std::size_t before = kept_.size();
      take(at);
      if (text_[at] != '\n') continue;
      ++line_;
      if (!keepsLines && kept_.size() > before) kept.push_back(sourceLine());
    }
    if (inBlock_) openComment_ = blockLine_;
    lines_ = std::move(kept);
    return std::move(kept_);
  }

  // Source line of a comment that has no end; 0 if there is none.
  std::int32_t openComment() const { return openComment_; }

 private:
  // Takes as many bytes as there are of which none changes what the text is. Gives where they end.
  std::size_t takePlain(std::size_t at) {
    if (copiesNext_ || inMarker_) return at;
    if (inLine_) return plainEnd(text_, at, kPlainInLineComment);
    if (inBlock_) return plainEnd(text_, at, kPlainInBlockComment);
    const bool inString = inSingle_ || inDouble_;
    const std::size_t end = plainEnd(text_, at, inString ? kPlainInString : kPlainInCode);
    const std::string_view run = std::string_view(text_).substr(at, end - at);
    kept_ += run;
    if (!inString && startsStatement_ && run.find_first_not_of(' ') != std::string_view::npos) {
      startsStatement_ = false;
    }
    return end;
  }

  void take(std::size_t at) {
    const char byte = text_[at];
    const char next = at + 1 < text_.size() ? text_[at + 1] : byte;
    const char previous = at > 0 ? text_[at - 1] : byte;
    if ((byte < ' ' && byte != '\n') || byte > '~') {
      kept_ += ' ';
      return;
    }
    if (std::exchange(copiesNext_, false)) {
      kept_ += byte;
      return;
    }
    const bool inString = inSingle_ || inDouble_;
    const bool inComment = inLine_ || inBlock_;
    if (byte == 'T' && !inString && !inComment && !inMarker_ && beginsMarker(at)) {
      inMarker_ = true;
      return;
    }
    if (byte == ';') {
      if (std::exchange(inMarker_, false)) return;
      startsStatement_ = true;
    }
    if ((startsStatement_ && byte == '[') || inMarker_) return;
    if (byte == '*' && !inString) {
      if (inLine_) return;
      if (inBlock_ && previous == '/') {
        copiesNext_ = true;
        return;
      }
    }
    if (byte == '/' && !inString && takeSlash(previous, next)) return;
    if (inString) {
      takeInString(byte);
      return;
    }
    if (byte == '\'' || byte == '"') {
      if (inComment) return;
      (byte == '"' ? inDouble_ : inSingle_) = true;
      kept_ += byte;
      return;
    }
    if (byte == '\n') {
      if (inBlock_) {
        kept_ += byte;
        return;
      }
      if (inLine_) {
        inLine_ = false;
        kept_ += byte;
        return;
      }
      startsStatement_ = true;
    }
    if (inComment) return;
    if (byte != ' ' && byte != '\n' && byte != '}' && byte != ';') startsStatement_ = false;
    kept_ += byte;
  }

  // Of the line that is read.
  std::int32_t sourceLine() const {
    return lines_.empty() ? static_cast<std::int32_t>(line_) + 1 : lines_[line_];
  }

  bool beginsMarker(std::size_t at) const {
    return at + kMarker.size() < text_.size() && text_.compare(at, kMarker.size(), kMarker) == 0 &&
           (at < 2 || text_[at - 2] != 'd');
  }

  // Whether the slash outside a string is dropped.
  bool takeSlash(char previous, char next) {
    if (inLine_) return true;
    if (inBlock_) {
      if (previous == '*') {
        inBlock_ = false;
        copiesNext_ = true;
      }
      return true;
    }
    inLine_ = next == '/';
    inBlock_ = next == '*';
    if (inBlock_) blockLine_ = sourceLine();
    return inLine_ || inBlock_;
  }

  void takeInString(char byte) {
    if (byte == '\\') copiesNext_ = true;
    if (byte == '\'' && inSingle_) inSingle_ = false;
    if (byte == '"' && inDouble_) inDouble_ = false;
    kept_ += byte;
  }

  const std::string& text_;
  std::vector<std::int32_t>& lines_;
  std::string kept_;
  std::size_t line_ = 0;
  std::int32_t blockLine_ = 0;  // of the last comment that began
  std::int32_t openComment_ = 0;
  bool inLine_ = false;
  bool inBlock_ = false;
  bool inSingle_ = false;
  bool inDouble_ = false;
  bool copiesNext_ = false;
  bool inMarker_ = false;
  bool startsStatement_ = true;
};

// Drops the lines that begin with a #, those that go on with one, and the blanks that indent a
// line. The line behind one of blanks keeps its own.
void dropDirectives(std::string& text) {
  std::size_t kept = 0;
  bool goesOn = false;
  bool keepsBlanks = false;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = text.find('\n', at);
    if (end == std::string::npos) end = text.size();
    const std::size_t first = std::min(text.find_first_not_of(' ', at), end);
    if (goesOn || (first < end && text[first] == '#')) {
      const std::size_t last = end == at ? std::string::npos : text.find_last_not_of(' ', end - 1);
      goesOn = last != std::string::npos && last >= at && text[last] == '\\';
      keepsBlanks = false;
    } else {
      const bool isBlank = first == end && end > at;
      const std::size_t from = keepsBlanks ? at : first;
      keepsBlanks = isBlank && !keepsBlanks;
      std::memmove(text.data() + kept, text.data() + from, end - from);
      kept += end - from;
    }
    if (end < text.size()) text[kept++] = '\n';
    at = end + 1;
  }
  text.resize(kept);
}

}  // namespace

CleanedText cleanText(std::string_view source) {
  std::vector<std::int32_t> lines;
  std::int32_t openPageComment = 0;
  const std::string withComments = dropPageComments(source, lines, openPageComment);
  CommentDropper dropper(withComments, lines);
  std::string text = dropper.run();
  dropDirectives(text);
  const std::int32_t openComment =
      dropper.openComment() != 0 ? dropper.openComment() : openPageComment;
  return {std::move(text), LineMap(std::move(lines)), openComment};
}

LineMap cleanedLines(std::string_view source) {
  const bool hasMarker = source.find(kMarker) != std::string_view::npos;
  if (!hasMarker && source.find('\r') == std::string_view::npos) return {};
  std::vector<std::int32_t> lines;
  std::int32_t openComment = 0;
  const std::string withComments = dropPageComments(source, lines, openComment);
  if (hasMarker) CommentDropper(withComments, lines).run();
  return LineMap(std::move(lines));
}

}  // namespace host::outline
