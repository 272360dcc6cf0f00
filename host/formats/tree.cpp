// The plug-in's own nesting for people: the file's name, and below it a line a record:
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
#include <string>
#include <string_view>

#include "formats/display_line.h"
#include "formats/formatters.h"
#include "formats/json_text.h"
#include "formats/record_selection.h"
#include "records/labels.h"
#include "records/record_reader.h"

namespace host {
namespace {

constexpr std::size_t kNumberColumns = 6;
constexpr std::size_t kLabelColumns = 12;  // as many as "preprocessor" has

struct LabelColor {
  std::string_view label;
  std::string_view code;
};

constexpr std::array kLabelColors = {
    LabelColor{"namespace", kMagenta}, LabelColor{"class", kYellow},
    LabelColor{"function", kBlue},     LabelColor{"logic", kCyan},
    LabelColor{"loop", kCyan},         LabelColor{"classvar", kGreen},
    LabelColor{"define", kMagenta},    LabelColor{"preprocessor", kMagenta},
    LabelColor{"htmlelement", kBlue},  LabelColor{"link", kGreen}};

std::string_view colorOf(std::string_view label) {
  if (isErrorLabel(label)) return kRed;
  const auto* const row =
      std::find_if(kLabelColors.begin(), kLabelColors.end(),
                   [label](const LabelColor& color) { return color.label == label; });
  return row == kLabelColors.end() ? std::string_view() : row->code;
}

void showRecord(const Record& record, std::size_t level, const FormatSettings& settings,
                std::string& out) {
  DisplayLine line(settings, out);
  std::string number;
  if (record.lineNumber != 0) appendNumber(number, record.lineNumber);
  line.showRight(number, kDim, kNumberColumns);
  line.skip(1);
  line.showLeft(record.label, colorOf(record.label), kLabelColumns);
  line.indent(level - 1, kNumberColumns + 1 + kLabelColumns);
  line.show(record.contents, "");
  line.end();
}

}  // namespace

std::string writeTreeFile(const FileReport& report, const FormatSettings& settings,
                          std::string& out) {
  if (showUnanswered(report, settings, out)) return {};
  showHeading(report.path, settings, out);
  RecordReader reader(report.answer);
  RecordSelection selection(settings);
  while (const Record* const record = reader.next()) {
    selection.take(*record);
    const std::size_t level = selection.level();
    if (level > 0 && selection.isWanted()) showRecord(*record, level, settings, out);
  }
  if (!reader.fault().empty()) showFault(report.path, reader.fault(), settings, out);
  return reader.fault();
}

}  // namespace host
