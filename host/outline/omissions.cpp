#include "outline/omissions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <utility>

#include "outline/cleaned_text.h"
#include "outline/limits.h"
#include "outline/page_tags.h"
#include "outline/quick_check.h"
#include "outline/source_lines.h"
#include "outline/statement_ends.h"
#include "records/record_reader.h"
#include "system/text_parts.h"

namespace host::outline {
namespace {

constexpr std::array<std::string_view, 6> kReasonWords = {
    "long-lines", "many-braces", "line-limit", "size-limit", "open-comment", "stopped-early"};
static_assert(kReasonWords.size() == static_cast<std::size_t>(OmissionReason::kStoppedEarly) + 1,
              "a word a reason");

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
  explicit Finder(std::string_view source) : source_(source), cleaned_(cleanText(source)) {}

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

  // Whether all of the text is within the limit.
  bool readToLimit(std::size_t maxBytes) {
    if (text().size() <= maxBytes) return true;
    const auto lineAt = [this](std::size_t end) {
      return static_cast<std::size_t>(
          std::count(text().begin(), text().begin() + static_cast<std::ptrdiff_t>(end), '\n'));
    };
    leaveOutRest(OmissionReason::kSizeLimit, lineAt(maxBytes), lineAt(text().size()));
    return false;
  }

  void readComments() {
    if (cleaned_.openComment == 0) return;
    leaveOutLines(OmissionReason::kOpenComment, cleaned_.openComment, lines().count());
  }

  void readStatements(std::string_view answer) {
    const StatementEnds ends = findStatementEnds(text());
    const bool isCommentOpen = cleaned_.openComment != 0;
    if (!isCommentOpen && ends.unendedLine == std::string_view::npos) return;
    std::int32_t line = 0;
    RecordReader records(answer);
    while (const Record* const record = records.next()) line = std::max(line, record->lineNumber);
    if (!records.fault().empty()) return;  // another module's
    // A conditional branch that the module does not read may hold the quote that seems to be open:
    // then there are records behind it.
    const bool isReadOn = line > 0 && static_cast<std::size_t>(line) - 1 > ends.unendedLine;
    if (isReadOn && !isCommentOpen) return;
    stopEarly(ends.lastLine == std::string_view::npos ? 0 : sourceLine(ends.lastLine));
  }

  std::string_view text() const { return cleaned_.text; }
  std::vector<Omission> take() { return std::move(omissions_); }

 private:
  const SourceLines& lines() {
    if (!lines_) lines_.emplace(source_);
    return *lines_;
  }

  std::int32_t sourceLine(std::size_t index) {
    return std::min(cleaned_.lines.sourceLine(index), lines().count());
  }

  Omission& entry(OmissionReason reason) {
    for (Omission& known : omissions_) {
      if (known.reason == reason) return known;
    }
    Omission omission;
    omission.reason = reason;
    omission.lineCount = lines().count() - (lines().text(lines().count()).empty() ? 1 : 0);
    omission.byteCount = static_cast<std::int64_t>(source_.size());
    return omissions_.emplace_back(omission);
  }

  void leaveOut(OmissionReason reason, std::size_t index) {
    Omission& omission = entry(reason);
    const std::int32_t line = sourceLine(index);
    if (omission.lines++ == 0) omission.line = line;
    omission.bytes += static_cast<std::int64_t>(lines().text(line).size());
  }

  // All source lines from one line of the cleaned text to another.
  void leaveOutRest(OmissionReason reason, std::size_t first, std::size_t last) {
    leaveOutLines(reason, sourceLine(first), sourceLine(last));
  }

  void leaveOutLines(OmissionReason reason, std::int32_t from, std::int32_t to) {
    Omission& omission = entry(reason);
    if (omission.lines == 0) omission.line = from;
    for (std::int32_t line = from; line <= to; ++line) {
      if (line == lines().count() && lines().text(line).empty()) break;
      ++omission.lines;
      omission.bytes += static_cast<std::int64_t>(lines().text(line).size());
    }
  }

  void stopEarly(std::int32_t lastLine) {
    leaveOutLines(OmissionReason::kStoppedEarly, lastLine + 1, lines().count());
    entry(OmissionReason::kStoppedEarly).line = lastLine;
  }

  std::string_view source_;
  std::optional<SourceLines> lines_;  // only where something is left out
  CleanedText cleaned_;
  std::vector<Omission> omissions_;
};

std::vector<Omission> omissionsOfScript(std::string_view source) {
  if (isSurelyReadWhole(source)) return {};
  Finder finder(source);
  finder.readComments();
  finder.readScript(finder.text(), 0);
  return finder.take();
}

std::vector<Omission> omissionsOfPage(std::string_view source) {
  if (isSurelyReadWhole(source)) return {};
  Finder finder(source);
  finder.readComments();
  finder.readToLimit(kMaxPageBytes);
  finder.readPage();
  return finder.take();
}

std::vector<Omission> omissionsOfOtherText(std::string_view source, std::string_view answer) {
  Finder finder(source);
  if (finder.readToLimit(kMaxOtherBytes)) finder.readStatements(answer);
  return finder.take();
}

}  // namespace

std::string_view reasonWord(OmissionReason reason) {
  return kReasonWords[static_cast<std::size_t>(reason)];
}

std::optional<OmissionReason> reasonCalled(std::string_view word) {
  const auto* const found = std::find(kReasonWords.begin(), kReasonWords.end(), word);
  if (found == kReasonWords.end()) return std::nullopt;
  return static_cast<OmissionReason>(found - kReasonWords.begin());
}

std::vector<Omission> findOmissions(std::string_view source, std::string_view answer) {
  return findOmissions(source, answer, std::nullopt);
}

std::optional<EarlyOmissions> findEarlyOmissions(std::string_view source, std::string_view path) {
  const Route route = routeOfName(path);
  if (route == Route::kOther) return std::nullopt;
  return EarlyOmissions{
      route, route == Route::kScript ? omissionsOfScript(source) : omissionsOfPage(source)};
}

std::vector<Omission> findOmissions(std::string_view source, std::string_view answer,
                                    std::optional<EarlyOmissions> early) {
  std::string path;
  const Route route = routeOf(answer, path);
  if (early && early->route == route) return std::move(early->omissions);
  switch (route) {
    case Route::kScript:
      return omissionsOfScript(source);
    case Route::kPage:
      return omissionsOfPage(source);
    case Route::kOther:
      break;
  }
  return omissionsOfOtherText(source, answer);
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
    case OmissionReason::kOpenComment:
      return lines + "in a comment that has no end, from line " + line;
    case OmissionReason::kStoppedEarly:
      break;
  }
  if (omission.line == 0) {
    return "reading stopped early: no line of " + withCommas(omission.lineCount) + " has a record";
  }
  return "reading stopped early: last record on line " + line + " of " +
         withCommas(omission.lineCount);
}

bool isOtherText(const std::vector<Omission>& omissions) {
  return std::any_of(omissions.begin(), omissions.end(), [](const Omission& each) {
    return each.reason == OmissionReason::kStoppedEarly;
  });
}

std::string describe(const std::vector<Omission>& omissions) {
  std::string text;
  for (const Omission& each : omissions)
    text.append(text.empty() ? "" : "; ").append(describe(each));
  return text;
}

}  // namespace host::outline
