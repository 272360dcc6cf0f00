#include <string_view>

#include "cli/completions.h"
#include "cli/option_table.h"
#include "cli/quoting.h"

namespace host {
namespace {

// A text inside single quotes and, there, inside an option of _arguments.
std::string zshText(std::string_view text) {
  std::string result;
  for (const char byte : withBackslashes(text, "\\:[]")) {
    if (byte == '\'') {
      result += R"('\'')";
    } else {
      result += byte;
    }
  }
  return result;
}

std::string zshAction(const Option& option) {
  if (option.takesList) return "_sequence compadd - " + joinedWords(option);
  if (option.words != nullptr && option.completion == Completion::kNothing) {
    return "(" + joinedWords(option) + ")";
  }
  if (option.words != nullptr) {
    return R"x({_alternative "words\:word\:()x" + joinedWords(option) +
           R"x()" "files\:file\:_files"})x";
  }
  switch (option.completion) {
    case Completion::kFiles:
      return "_files";
    case Completion::kDirectories:
      return "_files -/";
    case Completion::kNothing:
      break;
  }
  return " ";
}

std::string zshSpecification(const Option& option) {
  const std::string name(option.name);
  const std::string description = "[" + zshText(summary(option)) + "]";
  if (!option.argument.empty()) {
    const std::string value =
        description + ":" + std::string(option.argument) + ":" + zshAction(option) + "'";
    if (option.shortName.empty()) return (option.mayRepeat ? "'*" : "'") + name + "=" + value;
    const std::string shortName(option.shortName);
    return "'(" + shortName + " " + name + ")'{" + shortName + "+," + name + "=}'" + value;
  }
  if (option.shortName.empty()) return "'" + name + description + "'";
  const std::string shortName(option.shortName);
  return "'(" + shortName + " " + name + ")'{" + shortName + "," + name + "}'" + description + "'";
}

void appendZshArguments(std::string& out, const Command& command, std::string_view indent) {
  out.append(indent).append("_arguments -S \\\n");
  for (const Option& option : command.options) {
    out.append(indent).append("  ").append(zshSpecification(option)).append(" \\\n");
  }
}

}  // namespace

std::string zshCompletion() {
  std::string script = "#compdef quorl-js\n\n";
  std::string words;
  for (const Subcommand& each : kSubcommands) {
    words.append(words.empty() ? "" : " ").append(each.word);
    script.append("if (( CURRENT > 2 )) && [[ $words[2] == ").append(each.word);
    script += " ]]; then\n";
    appendZshArguments(script, each.command, "  ");
    const bool takesFiles = each.command.operandCompletion == Completion::kFiles;
    script.append("    '*:").append(each.command.operand);
    script.append(takesFiles ? ":_files'" : ": '").append("\n  return\nfi\n");
  }
  appendZshArguments(script, kProgram, "");
  return script + R"x(  '1:FILE or command:{_alternative "commands\:command\:()x" + words +
         R"x()" "files\:file\:_files"}' \)x"
         "\n  '*:FILE:_files'\n";
}

}  // namespace host
