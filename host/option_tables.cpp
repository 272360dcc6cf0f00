#include "option_tables.h"

#include <string_view>

#include "options.h"

namespace host {
namespace {

// A text inside a cell.
std::string cell(std::string_view text) {
  std::string result;
  for (const char byte : text) {
    if (byte == '|' || byte == '*' || byte == '_' || byte == '<') result += '\\';
    result += byte;
  }
  return result;
}

void appendRow(std::string& out, const std::string& left, std::string_view right) {
  out += "| " + left + " | " + cell(right) + " |\n";
}

std::string labelOf(const Option& option) {
  std::string label;
  if (!option.shortName.empty()) label.append("`").append(option.shortName).append("`, ");
  label.append("`").append(option.name);
  if (!option.argument.empty()) label.append(" ").append(option.argument);
  return label + "`";
}

}  // namespace

std::string optionTables() {
  std::string text = "| Option | |\n|---|---|\n";
  for (const Option& option : kOptions) appendRow(text, labelOf(option), option.help);
  appendRow(text, labelOf(kEndOfOptions), kEndOfOptions.help);
  text += "\n| Exit status | |\n|---|---|\n";
  for (const ExitStatus& row : kExitStatuses) {
    appendRow(text, std::string(row.status), row.meaning);
  }
  return text;
}

}  // namespace host
