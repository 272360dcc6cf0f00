#include "cli/markdown_tables.h"

#include <string_view>

#include "cli/option_table.h"

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

void appendTables(std::string& out, const Command& command, const std::string& ofWhat) {
  out += "| Option" + ofWhat + " | |\n|---|---|\n";
  for (const Option& option : command.options) appendRow(out, labelOf(option), option.help);
  appendRow(out, labelOf(command.endOfOptions), command.endOfOptions.help);
  out += "\n| Exit status" + ofWhat + " | |\n|---|---|\n";
  for (const ExitStatus& row : command.statuses) {
    appendRow(out, std::string(row.status), row.meaning);
  }
}

}  // namespace

std::string markdownTables() {
  std::string text;
  appendTables(text, kProgram, "");
  text += "\n";
  appendTables(text, kMerge, " of `merge`");
  return text;
}

}  // namespace host
