#include "cli/completions.h"

#include <string_view>

#include "cli/option_table.h"

namespace host {
namespace {

// The text with a backslash before each byte that the set names.
std::string withBackslashes(std::string_view text, std::string_view set) {
  std::string result;
  for (const char byte : text) {
    if (set.find(byte) != std::string_view::npos) result += '\\';
    result += byte;
  }
  return result;
}

// ---- bash, where what the function leaves empty is completed as a file's name

constexpr std::string_view kBashOpening = R"(# bash completion for quorl-js

_quorl_js() {
    local current=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} word
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD - 1}"; do
        [[ $word == -- ]] && return
    done
    # The "=" between an option and its value is a word of its own.
    if [[ $current == = ]]; then
        current=
    elif [[ $option == = ]]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    fi
)";

// Behind what is done for merge.
constexpr std::string_view kBashCases = R"(        return
    fi
    # A word that may become merge or the name of a file.
    if [[ $COMP_CWORD -eq 1 && -n $current && merge == "$current"* ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -W merge -f -- "$current")
        return
    fi
    case $option in
)";
constexpr std::string_view kBashClosing = R"(    esac
}

complete -o default -F _quorl_js quorl-js
)";

std::string bashReply(std::string_view words) {
  return "COMPREPLY=($(compgen -W '" + std::string(words) + "' -- \"$current\"))";
}

std::string bashAction(const Option& option) {
  if (!option.words.empty() && option.completion == Completion::kNothing) {
    return "compopt +o default; " + bashReply(option.words);
  }
  if (!option.words.empty()) return bashReply(option.words);
  switch (option.completion) {
    case Completion::kFiles:
      return ":";
    case Completion::kDirectories:
      return "compopt +o default -o dirnames";
    case Completion::kNothing:
      break;
  }
  return "compopt +o default";
}

// ---- zsh

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
  if (!option.words.empty() && option.completion == Completion::kNothing) {
    return "(" + std::string(option.words) + ")";
  }
  if (!option.words.empty()) {
    return R"x({_alternative "words\:word\:()x" + std::string(option.words) +
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

// ---- fish

std::string fishQuoted(std::string_view text) { return "'" + withBackslashes(text, "\\'") + "'"; }

std::string fishArgument(const Option& option) {
  if (option.argument.empty()) return "";
  if (option.completion == Completion::kDirectories)
    return " -x -a '(__fish_complete_directories)'";
  std::string text = option.completion == Completion::kFiles ? " -r -F" : " -x";
  if (!option.words.empty()) text += " -a " + fishQuoted(option.words);
  return text;
}

std::string namesOf(const Command& command) {
  std::string names;
  for (const Option& option : command.options) {
    for (const std::string_view name : {option.shortName, option.name}) {
      if (!name.empty()) names.append(names.empty() ? "" : " ").append(name);
    }
  }
  return names;
}

void appendZshArguments(std::string& out, const Command& command, std::string_view indent) {
  out.append(indent).append("_arguments -S \\\n");
  for (const Option& option : command.options) {
    out.append(indent).append("  ").append(zshSpecification(option)).append(" \\\n");
  }
}

void appendFishOptions(std::string& out, const Command& command, std::string_view condition) {
  for (const Option& option : command.options) {
    out.append("complete -c quorl-js -n ").append(fishQuoted(condition));
    if (!option.shortName.empty()) out.append(" -s ").append(option.shortName.substr(1));
    out.append(" -l ").append(option.name.substr(2)).append(fishArgument(option));
    out += " -d " + fishQuoted(summary(option)) + "\n";
  }
}

}  // namespace

std::string bashCompletion() {
  std::string script(kBashOpening);
  script += "    if [[ ${COMP_WORDS[1]} == merge && $COMP_CWORD -gt 1 ]]; then\n";
  script += "        [[ $current == -* ]] && " + bashReply(namesOf(kMerge)) + "\n";
  script += kBashCases;
  for (const Option& option : kProgram.options) {
    if (option.argument.empty()) continue;
    script += "        ";
    if (!option.shortName.empty()) script.append(option.shortName).append(" | ");
    script.append(option.name).append(") ").append(bashAction(option)).append(" ;;\n");
  }
  script += "        *) [[ $current == -* ]] && " + bashReply(namesOf(kProgram)) + " ;;\n";
  return script.append(kBashClosing);
}

std::string zshCompletion() {
  std::string script =
      "#compdef quorl-js\n\nif (( CURRENT > 2 )) && [[ $words[2] == merge ]]; then\n";
  appendZshArguments(script, kMerge, "  ");
  script += "    '*:SHARD:_files'\n  return\nfi\n";
  appendZshArguments(script, kProgram, "");
  return script +
         R"x(  '1:FILE or command:{_alternative "commands\:command\:(merge)" "files\:file\:_files"}' \)x"
         "\n  '*:FILE:_files'\n";
}

std::string fishCompletion() {
  std::string script = "# fish completion for quorl-js\n\n";
  appendFishOptions(script, kProgram, "not __fish_seen_subcommand_from merge");
  script += "complete -c quorl-js -n __fish_is_first_token -a merge -d ";
  script += fishQuoted("joins the ndjson outputs of several runs") + "\n";
  appendFishOptions(script, kMerge, "__fish_seen_subcommand_from merge");
  return script;
}

}  // namespace host
