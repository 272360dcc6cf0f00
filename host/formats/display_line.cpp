#include "formats/display_line.h"

#include <algorithm>

#include "formats/json_text.h"
#include "records/status_words.h"
#include "system/display_text.h"

namespace host {
namespace {

constexpr std::size_t kLevelColumns = 2;
// An outline of n levels would be of n squared bytes if its lines went on to move to the right.
constexpr std::size_t kMaxLevelsShown = 30;
constexpr std::size_t kMinTextColumns = 20;  // that a line's text has whatever stands before it

// As many levels as there is room for to the left of a text that can still be read.
std::size_t maxLevelsShown(std::size_t width, std::size_t otherColumns) {
  const std::size_t taken = otherColumns + kLevelColumns + kMinTextColumns;
  if (width == 0) return kMaxLevelsShown;
  if (width <= taken) return 0;
  return std::min(kMaxLevelsShown, (width - taken) / kLevelColumns);
}

void showEmpty(std::string_view path, const FormatSettings& settings, std::string& out) {
  DisplayLine line(settings, out);
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
  DisplayLine line(whole, out);
  line.show(path, kBold);
  line.show(": ", "");
  line.show(std::string(status).append(": ").append(withoutPath(message, path)), kRed);
  line.end();
}

}  // namespace

DisplayLine::DisplayLine(const FormatSettings& settings, std::string& out)
    : settings_(settings),
      out_(out),
      columnsLeft_(settings.width == 0 ? kNoLimit : settings.width) {}

void DisplayLine::skip(std::size_t columns) {
  columns = std::min(columns, columnsLeft_);
  out_.append(columns, ' ');
  columnsLeft_ -= columns;
}

std::size_t DisplayLine::show(std::string_view text, std::string_view color) {
  const bool colored = settings_.color && !color.empty() && !text.empty();
  if (colored) out_ += color;
  const std::size_t columns = appendDisplay(out_, text, settings_.escapeControlBytes, columnsLeft_);
  if (colored) out_ += kReset;
  columnsLeft_ -= columns;
  return columns;
}

void DisplayLine::showLeft(std::string_view text, std::string_view color, std::size_t columns) {
  const std::size_t taken = show(text, color);
  skip(columns - std::min(columns, taken));
}

void DisplayLine::showRight(std::string_view text, std::string_view color, std::size_t columns) {
  skip(columns - std::min(columns, text.size()));
  show(text, color);
}

void DisplayLine::indent(std::size_t level, std::size_t otherColumns) {
  const std::size_t shown = std::min(level, maxLevelsShown(settings_.width, otherColumns));
  skip(kLevelColumns * (shown + 1));
  if (shown == level) return;
  std::string mark = "[";
  appendNumber(mark, level + 1);
  show(mark + "] ", kDim);
}

void showHeading(std::string_view path, const FormatSettings& settings, std::string& out) {
  DisplayLine line(settings, out);
  line.show(path, kBold);
  line.end();
}

bool showUnanswered(const FileReport& report, const FormatSettings& settings, std::string& out) {
  if (report.status == FileStatus::kAnswered) return false;
  if (report.status == FileStatus::kEmpty) {
    showEmpty(report.path, settings, out);
  } else {
    showProblem(report.path, statusWord(report.status), report.message, settings, out);
  }
  return true;
}

void showFault(std::string_view path, std::string_view fault, const FormatSettings& settings,
               std::string& out) {
  showProblem(path, kUnreadableWord, fault, settings, out);
}

}  // namespace host
