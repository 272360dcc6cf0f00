#include <string_view>

#include "cli/completions.h"
#include "cli/option_table.h"
#include "cli/quoting.h"

namespace host {
namespace {

std::string fishQuoted(std::string_view text) { return "'" + withBackslashes(text, "\\'") + "'"; }

std::string fishArgument(const Option& option) {
  if (option.argument.empty()) return "";
  if (option.completion == Completion::kDirectories)
    return " -x -a '(__fish_complete_directories)'";
  std::string text = option.completion == Completion::kFiles ? " -r -F" : " -x";
  if (option.takesList) return text + " -a '(__fish_append , " + joinedWords(option) + ")'";
  if (option.words != nullptr) text += " -a " + fishQuoted(joinedWords(option));
  return text;
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

std::string fishCompletion() {
  std::string script = "# fish completion for quorl-js\n\n";
  std::string words;
  for (const Subcommand& each : kSubcommands) words.append(" ").append(each.word);
  appendFishOptions(script, kProgram, "not __fish_seen_subcommand_from" + words);
  for (const Subcommand& each : kSubcommands) {
    const std::string word(each.word);
    script += "complete -c quorl-js -n __fish_is_first_token -a " + word + " -d ";
    script += fishQuoted(each.summary) + "\n";
    appendFishOptions(script, each.command, "__fish_seen_subcommand_from " + word);
  }
  return script;
}

}  // namespace host
