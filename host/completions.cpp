#include "completions.h"

#include <string_view>

#include "options.h"

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

}  // namespace

std::string bashCompletion() {
  std::string script(kBashOpening);
  std::string names;
  for (const Option& option : kOptions) {
    for (const std::string_view name : {option.shortName, option.name}) {
      if (!name.empty()) names.append(names.empty() ? "" : " ").append(name);
    }
    if (option.argument.empty()) continue;
    script += "        ";
    if (!option.shortName.empty()) script.append(option.shortName).append(" | ");
    script.append(option.name).append(") ").append(bashAction(option)).append(" ;;\n");
  }
  script += "        *) [[ $current == -* ]] && " + bashReply(names) + " ;;\n";
  return script.append(kBashClosing);
}

std::string zshCompletion() {
  std::string script = "#compdef quorl-js\n\n_arguments -S \\\n";
  for (const Option& option : kOptions) script += "  " + zshSpecification(option) + " \\\n";
  return script + "  '*:FILE:_files'\n";
}

std::string fishCompletion() {
  std::string script = "# fish completion for quorl-js\n\n";
  for (const Option& option : kOptions) {
    script += "complete -c quorl-js";
    if (!option.shortName.empty()) script.append(" -s ").append(option.shortName.substr(1));
    script.append(" -l ").append(option.name.substr(2)).append(fishArgument(option));
    script += " -d " + fishQuoted(summary(option)) + "\n";
  }
  return script;
}

}  // namespace host
