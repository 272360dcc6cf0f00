#include "cli/markdown_tables.h"

#include <string_view>

#include "cli/option_table.h"
#include "cli/quoting.h"

namespace host {
namespace {

void appendRow(std::string& out, const std::string& left, const std::string& right) {
  out += "| " + left + " | " + withBackslashes(right, "|*_<") + " |\n";
}

void appendOption(std::string& out, const Option& option) {
  appendRow(out, "`" + labelOf(option) + "`", descriptionOf(option));
}

void appendTables(std::string& out, const Command& command, const std::string& ofWhat) {
  out += "| Option" + ofWhat + " | |\n|---|---|\n";
  for (const Option& option : command.options) appendOption(out, option);
  appendOption(out, command.endOfOptions);
  out += "\n| Exit status" + ofWhat + " | |\n|---|---|\n";
  for (const ExitStatus& row : command.statuses) {
    appendRow(out, std::string(row.status), std::string(row.meaning));
  }
}

}  // namespace

std::string markdownTables() {
  std::string text;
  appendTables(text, kProgram, "");
  for (const Subcommand& each : kSubcommands) {
    text += "\n";
    appendTables(text, each.command, " of `" + std::string(each.word) + "`");
  }
  return text;
}

}  // namespace host
