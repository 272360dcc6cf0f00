#include "outline/omissions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <deque>

#include "outline/cleaned_text.h"
#include "outline/page_tags.h"
#include "outline/record_tags.h"
#include "outline/script_items.h"
#include "outline/source_lines.h"
#include "records/record_reader.h"

namespace host::outline {
namespace {

constexpr std::int64_t kMaxBraces = 100;
constexpr std::size_t kMaxPageBytes = 52'428'800;
constexpr std::size_t kMaxOtherBytes = 10'485'760;
constexpr std::size_t kLastRecords = 16;

// More braces of a kind than the module takes, counted as it counts them: outside strings that end
// with the line, and not behind a backslash.
bool hasManyBraces(std::string_view line) {
  std::int64_t open = 0;
  std::int64_t closed = 0;
  char quote = 0;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const char byte = line[at];
    if (byte == '\\') {
      ++at;
    } else if (quote != 0) {
      if (byte == quote) quote = 0;
    } else if (byte == '"' || byte == '\'' || byte == '`') {
      quote = byte;
    } else {
      open += byte == '{';
      closed += byte == '}';
    }
  }
  return open > kMaxBraces || closed > kMaxBraces;
}

class Finder {
 public:
  explicit Finder(std::string_view source)
      : source_(source), lines_(source), cleaned_(cleanText(source)) {}

  // The text of a script, whose first line has that index in the cleaned text.
  void readScript(std::string_view script, std::size_t firstLine) {
    std::int32_t count = 0;
    std::size_t line = firstLine;
    for (std::size_t at = 0; at < script.size(); ++line) {
      if (count++ == kMaxScriptLines) {
        leaveOutRest(
            OmissionReason::kLineLimit, line,
            firstLine + static_cast<std::size_t>(std::count(script.begin(), script.end(), '\n')));
        return;
      }
      const std::size_t end = std::min(script.find('\n', at), script.size());
      const std::string_view text = script.substr(at, end - at);
      if (text.size() > kMaxLineBytes) {
        leaveOut(OmissionReason::kLongLines, line);
      } else if (hasManyBraces(text)) {
        leaveOut(OmissionReason::kManyBraces, line);
      }
      at = end + 1;
    }
  }

  void readPage() {
    PageTags tags(cleaned_);
    PageTag tag;
    while (tags.next(tag)) {
      if (tag.isInlineScript) readScript(tag.script, tag.scriptLine);
    }
  }

  void readToLimit(std::size_t maxBytes) {
    if (text().size() <= maxBytes) return;
    const auto lineAt = [this](std::size_t end) {
      return static_cast<std::size_t>(
          std::count(text().begin(), text().begin() + static_cast<std::ptrdiff_t>(end), '\n'));
    };
    leaveOutRest(OmissionReason::kSizeLimit, lineAt(maxBytes), lineAt(text().size()));
  }

  // Whether the last word of the text is in one of the last records.
  void readRecords(std::string_view answer) {
    const std::string_view word = lastWord();
    if (word.empty()) return;
    std::deque<std::string> last;
    std::int32_t line = 0;
    RecordReader records(answer);
    while (const Record* const record = records.next()) {
      if (wrapsFile(*record)) continue;
      last.emplace_back(record->contents);
      if (last.size() > kLastRecords) last.pop_front();
      line = std::max(line, record->lineNumber);
    }
    const bool isThere = std::any_of(last.begin(), last.end(), [word](const std::string& contents) {
      return contents.find(word) != std::string::npos;
    });
    const auto wordLine = std::count(text().data(), word.data(), '\n') + 1;
    if (isThere || line >= wordLine) return;
    Omission& omission = entry(OmissionReason::kStoppedEarly);
    omission.line = line == 0 ? 0 : sourceLine(static_cast<std::size_t>(line) - 1);
    omission.lines = lines_.count() - omission.line;
  }

  std::string_view text() const { return cleaned_.text; }
  std::vector<Omission> take() { return std::move(omissions_); }

 private:
  std::int32_t sourceLine(std::size_t index) const {
    return std::min(cleaned_.lines.sourceLine(index), lines_.count());
  }

  Omission& entry(OmissionReason reason) {
    for (Omission& known : omissions_) {
      if (known.reason == reason) return known;
    }
    Omission omission;
    omission.reason = reason;
    omission.lineCount = lines_.count() - (lines_.text(lines_.count()).empty() ? 1 : 0);
    omission.byteCount = static_cast<std::int64_t>(source_.size());
    return omissions_.emplace_back(omission);
  }

  void leaveOut(OmissionReason reason, std::size_t index) {
    Omission& omission = entry(reason);
    const std::int32_t line = sourceLine(index);
    if (omission.lines++ == 0) omission.line = line;
    omission.bytes += static_cast<std::int64_t>(lines_.text(line).size());
  }

  // All source lines from one line of the cleaned text to another.
  void leaveOutRest(OmissionReason reason, std::size_t first, std::size_t last) {
    Omission& omission = entry(reason);
    const std::int32_t from = sourceLine(first);
    const std::int32_t to = sourceLine(last);
    if (omission.lines == 0) omission.line = from;
    for (std::int32_t line = from; line <= to; ++line) {
      if (line == lines_.count() && lines_.text(line).empty()) break;
      ++omission.lines;
      omission.bytes += static_cast<std::int64_t>(lines_.text(line).size());
    }
  }

  std::string_view lastWord() const {
    const auto isLetter = [](char byte) {
      return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
             (byte >= '0' && byte <= '9');
    };
    std::size_t end = text().size();
    while (end > 0 && !isLetter(text()[end - 1])) --end;
    std::size_t begin = end;
    while (begin > 0 && isLetter(text()[begin - 1])) --begin;
    return text().substr(begin, end - begin);
  }

  std::string_view source_;
  SourceLines lines_;
  CleanedText cleaned_;
  std::vector<Omission> omissions_;
};

std::string withCommas(std::int64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3;) {
    at -= 3;
    digits.insert(at, ",");
  }
  return digits;
}

}  // namespace

std::vector<Omission> findOmissions(std::string_view source, std::string_view answer) {
  std::string path;
  const Route route = routeOf(answer, path);
  Finder finder(source);
  switch (route) {
    case Route::kScript:
      finder.readScript(finder.text(), 0);
      break;
    case Route::kPage:
      finder.readToLimit(kMaxPageBytes);
      finder.readPage();
      break;
    case Route::kOther:
      finder.readToLimit(kMaxOtherBytes);
      if (answer.starts_with("[\n")) finder.readRecords(answer);
      break;
  }
  return finder.take();
}

std::string describe(const Omission& omission) {
  const std::string lines = withCommas(omission.lines) + " of " + withCommas(omission.lineCount) +
                            (omission.lineCount == 1 ? " line" : " lines") + " left out (" +
                            withCommas(omission.bytes) + " of " + withCommas(omission.byteCount) +
                            " bytes): ";
  const std::string line = withCommas(omission.line);
  switch (omission.reason) {
    case OmissionReason::kLongLines:
      return lines + "longer than 10,000 bytes";
    case OmissionReason::kManyBraces:
      return lines + "more than 100 braces";
    case OmissionReason::kLineLimit:
      return lines + "behind the 100,000th line, from line " + line;
    case OmissionReason::kSizeLimit:
      return lines + "behind the size limit, from line " + line;
    case OmissionReason::kStoppedEarly:
      break;
  }
  return "reading stopped early: last record on line " + line + " of " +
         withCommas(omission.lineCount);
}

}  // namespace host::outline
