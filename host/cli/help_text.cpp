#include "cli/help_text.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "cli/option_table.h"

namespace host {
namespace {

constexpr std::size_t kLineBytes = 79;
constexpr std::string_view kMargin = "  ";  // before a label, and between it and its text

std::string labelOf(const Option& option) {
  std::string label;
  if (!option.shortName.empty()) label.append(option.shortName).append(", ");
  label += option.name;
  if (!option.argument.empty()) label.append(" ").append(option.argument);
  return label;
}

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
  std::string_view rest = example.commands;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    out.append(kMargin).append(kMargin).append(line).append("\n");
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
}

}  // namespace

std::string helpText(const Command& command) {
  std::size_t labelBytes = 0;
  for (const Option& option : command.options)
    labelBytes = std::max(labelBytes, labelOf(option).size());

  std::string text;
  for (const std::string_view synopsis : command.synopses) {
    text.append(text.empty() ? "Usage: " : "       ").append(synopsis).append("\n");
  }
  text += "\n";
  appendWrapped(text, command.purpose, 0);
  text += "\nOptions:\n";
  for (const Option& option : command.options) {
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
