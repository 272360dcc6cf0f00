#include "cli/help_text.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "cli/option_table.h"
#include "system/text_parts.h"

namespace host {
namespace {

constexpr std::size_t kLineBytes = 79;
constexpr std::string_view kMargin = "  ";  // before a label, and between it and its text

// Appends the text, broken at blanks, whose first line is indented already.
void appendWrapped(std::string& out, std::string_view text, std::size_t indent) {
  const std::size_t width = kLineBytes - indent;
  while (text.size() > width) {
    std::size_t end = text.rfind(' ', width);
    if (end == std::string_view::npos) end = text.find(' ');  // a word longer than the line
    if (end == std::string_view::npos) break;
    out.append(text.substr(0, end)).append("\n").append(indent, ' ');
    text.remove_prefix(end + 1);
  }
  out.append(text).append("\n");
}

void appendEntry(std::string& out, std::string_view label, std::string_view text,
                 std::size_t labelBytes) {
  out.append(kMargin).append(label).append(labelBytes - label.size(), ' ').append(kMargin);
  appendWrapped(out, text, 2 * kMargin.size() + labelBytes);
}

void appendExample(std::string& out, const Example& example) {
  out.append(kMargin).append(example.purpose).append("\n");
  for (const std::string_view line : partsOf(example.commands, '\n')) {
    out.append(kMargin).append(kMargin).append(line).append("\n");
  }
}

}  // namespace

std::string helpText(const Command& command) {
  std::size_t labelBytes = 0;
  for (const Option& option : command.options) {
    labelBytes = std::max(labelBytes, labelOf(option).size());
  }

  std::string text;
  for (const std::string_view synopsis : command.synopses) {
    text.append(text.empty() ? "Usage: " : "       ").append(synopsis).append("\n");
  }
  text += "\n";
  appendWrapped(text, command.purpose, 0);
  if (command.options.front().group.empty()) text += "\nOptions:\n";
  for (const Option& option : command.options) {
    if (!option.group.empty()) text.append("\n").append(option.group).append(":\n");
    appendEntry(text, labelOf(option), option.help, labelBytes);
  }
  appendEntry(text, labelOf(command.endOfOptions), command.endOfOptions.help, labelBytes);
  text += "\nExit status:\n";
  for (const ExitStatus& row : command.statuses) appendEntry(text, row.status, row.meaning, 1);
  text += "\nExamples:\n";
  for (const Example& example : command.examples) appendExample(text, example);
  return text;
}

}  // namespace host
