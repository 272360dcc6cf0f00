// An outline for people: the file's name, and below it a line a record:
//
//   examples/greet.js
//          class         Greet
//        1 function        function Greeter(name) {
//        2 line              var label = name;
//
// The record of the file itself is the heading; levels are counted from the records below it.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "formats/formatters.h"
#include "formats/json_text.h"
#include "formats/record_selection.h"
#include "records/labels.h"
#include "records/record_reader.h"
#include "records/status_words.h"
#include "system/display_text.h"

namespace host {
namespace {

constexpr std::size_t kNumberColumns = 6;
constexpr std::size_t kLabelColumns = 12;  // as many as "preprocessor" has
constexpr std::size_t kLevelColumns = 2;
// An outline of n levels would be of n squared bytes if its lines went on to move to the right.
constexpr std::size_t kMaxLevelsShown = 30;
constexpr std::size_t kMinTextColumns = 20;  // that a line's text has whatever stands before it

constexpr std::string_view kPlain = "\x1b[0m";
constexpr std::string_view kBold = "\x1b[1m";
constexpr std::string_view kDim = "\x1b[2m";
constexpr std::string_view kRed = "\x1b[31m";

struct LabelColor {
  std::string_view label;
  std::string_view code;
};

constexpr std::array kLabelColors = {
    LabelColor{"namespace", "\x1b[35m"},   LabelColor{"class", "\x1b[33m"},
    LabelColor{"function", "\x1b[34m"},    LabelColor{"logic", "\x1b[36m"},
    LabelColor{"loop", "\x1b[36m"},        LabelColor{"classvar", "\x1b[32m"},
    LabelColor{"define", "\x1b[35m"},      LabelColor{"preprocessor", "\x1b[35m"},
    LabelColor{"htmlelement", "\x1b[34m"}, LabelColor{"link", "\x1b[32m"}};

std::string_view colorOf(std::string_view label) {
  if (isErrorLabel(label)) return kRed;
  const auto* const row =
      std::find_if(kLabelColors.begin(), kLabelColors.end(),
                   [label](const LabelColor& color) { return color.label == label; });
  return row == kLabelColors.end() ? std::string_view() : row->code;
}

// One line of the outline, and how much room is left in it.
class Line {
 public:
  Line(const FormatSettings& settings, std::string& out)
      : settings_(settings),
        out_(out),
        columnsLeft_(settings.width == 0 ? kNoLimit : settings.width) {}

  void skip(std::size_t columns) {
    columns = std::min(columns, columnsLeft_);
    out_.append(columns, ' ');
    columnsLeft_ -= columns;
  }

  // Gives the columns that the text took up.
  std::size_t show(std::string_view text, std::string_view color) {
    const bool colored = settings_.color && !color.empty() && !text.empty();
    if (colored) out_ += color;
    const std::size_t columns =
        appendDisplay(out_, text, settings_.escapeControlBytes, columnsLeft_);
    if (colored) out_ += kPlain;
    columnsLeft_ -= columns;
    return columns;
  }

  void end() { out_ += "\n"; }

 private:
  const FormatSettings& settings_;
  std::string& out_;
  std::size_t columnsLeft_;
};

// As many levels as there is room for to the left of a text that can still be read.
std::size_t maxLevelsShown(std::size_t width) {
  constexpr std::size_t kOtherColumns =
      kNumberColumns + 1 + kLabelColumns + kLevelColumns + kMinTextColumns;
  if (width == 0) return kMaxLevelsShown;
  if (width <= kOtherColumns) return 0;
  return std::min(kMaxLevelsShown, (width - kOtherColumns) / kLevelColumns);
}

void showRecord(const Record& record, std::size_t level, const FormatSettings& settings,
                std::string& out) {
  Line line(settings, out);
  std::string number;
  if (record.lineNumber != 0) appendNumber(number, record.lineNumber);
  line.skip(kNumberColumns - std::min(kNumberColumns, number.size()));
  line.show(number, kDim);
  line.skip(1);
  const std::size_t labelColumns = line.show(record.label, colorOf(record.label));
  line.skip(kLabelColumns - std::min(kLabelColumns, labelColumns));
  const std::size_t levelsShown = std::min(level - 1, maxLevelsShown(settings.width));
  line.skip(kLevelColumns * (levelsShown + 1));
  if (levelsShown < level - 1) {
    std::string mark = "[";
    appendNumber(mark, level);
    line.show(mark + "] ", kDim);
  }
  line.show(record.contents, "");
  line.end();
}

void showHeading(std::string_view path, const FormatSettings& settings, std::string& out) {
  Line line(settings, out);
  line.show(path, kBold);
  line.end();
}

void showEmpty(std::string_view path, const FormatSettings& settings, std::string& out) {
  Line line(settings, out);
  line.show(path, kBold);
  line.show(": ", "");
  line.show(kEmptyWord, kDim);
  line.end();
}

// The message without the path, which stands before it and which many messages begin or end with.
std::string_view withoutPath(std::string_view message, std::string_view path) {
  const std::string name = onOneLine(path);
  if (message.starts_with(name + ": ")) message.remove_prefix(name.size() + 2);
  if (message.ends_with(": " + name)) message.remove_suffix(name.size() + 2);
  return message;
}

void showProblem(std::string_view path, std::string_view status, std::string_view message,
                 const FormatSettings& settings, std::string& out) {
  FormatSettings whole = settings;
  whole.width = 0;  // nothing of what went wrong is cut
  Line line(whole, out);
  line.show(path, kBold);
  line.show(": ", "");
  line.show(std::string(status).append(": ").append(withoutPath(message, path)), kRed);
  line.end();
}

}  // namespace

std::string writeTreeFile(const FileReport& report, const FormatSettings& settings,
                          std::string& out) {
  if (report.status == FileStatus::kEmpty) {
    showEmpty(report.path, settings, out);
    return {};
  }
  if (report.status != FileStatus::kAnswered) {
    showProblem(report.path, statusWord(report.status), report.message, settings, out);
    return {};
  }
  showHeading(report.path, settings, out);
  RecordReader reader(report.answer);
  RecordSelection selection(settings);
  while (const Record* const record = reader.next()) {
    selection.take(*record);
    const std::size_t level = selection.level();
    if (level > 0 && selection.isWanted()) showRecord(*record, level, settings, out);
  }
  if (!reader.fault().empty()) {
    showProblem(report.path, kUnreadableWord, reader.fault(), settings, out);
  }
  return reader.fault();
}

}  // namespace host
