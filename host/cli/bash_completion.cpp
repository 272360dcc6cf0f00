// What the function leaves empty, bash completes as the name of a file.

#include <string_view>

#include "cli/completions.h"
#include "cli/option_table.h"

namespace host {
namespace {

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

constexpr std::string_view kBashClosing = R"(}

complete -o default -F _quorl_js quorl-js
)";

std::string bashReply(std::string_view words) {
  return "COMPREPLY=($(compgen -W '" + std::string(words) + "' -- \"$current\"))";
}

// Completes what is behind the last comma.
std::string bashListReply(std::string_view words) {
  return "COMPREPLY=($(compgen -P \"${current%\"${current##*,}\"}\" -W '" + std::string(words) +
         "' -- \"${current##*,}\"))";
}

std::string bashAction(const Option& option) {
  if (option.takesList) return "compopt +o default; " + bashListReply(joinedWords(option));
  if (option.words != nullptr) {
    const bool areAll = option.completion == Completion::kNothing;
    return (areAll ? "compopt +o default; " : "") + bashReply(joinedWords(option));
  }
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

std::string namesOf(const Command& command) {
  std::string names;
  for (const Option& option : command.options) {
    for (const std::string_view name : {option.shortName, option.name}) {
      if (!name.empty()) names.append(names.empty() ? "" : " ").append(name);
    }
  }
  return names;
}

// What is offered behind an option with a value, and else the names of the options.
std::string bashCases(const Command& command, const std::string& indent) {
  std::string script = indent + "case $option in\n";
  for (const Option& option : command.options) {
    if (option.argument.empty()) continue;
    script += indent + "    ";
    if (!option.shortName.empty()) script.append(option.shortName).append(" | ");
    script.append(option.name).append(") ").append(bashAction(option)).append(" ;;\n");
  }
  script += indent + "    *) [[ $current == -* ]] && " + bashReply(namesOf(command)) + " ;;\n";
  return script + indent + "esac\n";
}

}  // namespace

std::string bashCompletion() {
  std::string script(kBashOpening);
  std::string words;
  for (const Subcommand& each : kSubcommands) {
    const std::string word(each.word);
    words += (words.empty() ? "" : " ") + word;
    script += "    if [[ ${COMP_WORDS[1]} == " + word + " && $COMP_CWORD -gt 1 ]]; then\n";
    script += bashCases(each.command, "        ");
    script += "        return\n    fi\n";
  }
  script +=
      "    # A word that may become a command or the name of a file.\n"
      "    if [[ $COMP_CWORD -eq 1 && -n $current ]] &&\n"
      "        compgen -W '" +
      words +
      "' -- \"$current\" >/dev/null; then\n"
      "        compopt -o filenames\n"
      "        mapfile -t COMPREPLY < <(compgen -W '" +
      words +
      "' -f -- \"$current\")\n"
      "        return\n    fi\n";
  script += bashCases(kProgram, "    ");
  return script.append(kBashClosing);
}

}  // namespace host
