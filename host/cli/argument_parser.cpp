#include "cli/argument_parser.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <utility>

#include "cli/suggestion.h"
#include "system/text_parts.h"

namespace host {
namespace {

void addOption(CLI::App& app, const Option& option) {
  std::string names(option.name);
  if (!option.shortName.empty()) names.append(",").append(option.shortName);
  if (option.name == "--help") {
    app.set_help_flag(names)->disable_flag_override();
  } else if (option.argument.empty()) {
    app.add_flag(names)->disable_flag_override();
  } else {
    CLI::Option* const added = app.add_option(names)->type_name(std::string(option.argument));
    added->multi_option_policy(option.mayRepeat ? CLI::MultiOptionPolicy::TakeAll
                                                : CLI::MultiOptionPolicy::TakeLast);
  }
  if (!option.neededName.empty()) {  // it stands before this one in the table
    app.get_option(std::string(option.name))->needs(app.get_option(std::string(option.neededName)));
  }
}

// Whether the text is the name of an option that takes a value.
bool takesValue(const CLI::App& app, const std::string& text) {
  if (!text.starts_with("--")) return false;
  const CLI::Option* option = app.get_option_no_throw(text);
  return option != nullptr && option->get_items_expected_max() > 0;
}

// The arguments as CLI11 is to see them. It reads "--name=" as "--name" and would take the
// argument behind it for the value, so an empty value becomes an argument of its own.
std::vector<std::string> withEmptyValues(const CLI::App& app, std::vector<std::string> arguments) {
  std::vector<std::string> result;
  for (auto next = arguments.begin(); next != arguments.end(); ++next) {
    if (*next == "--") {
      std::move(next, arguments.end(), std::back_inserter(result));
      break;
    }
    const std::string name = next->substr(0, next->find('='));
    if (!takesValue(app, name)) {
      result.push_back(std::move(*next));
    } else if (*next == name + "=") {
      result.insert(result.end(), {name, ""});
    } else {
      const bool valueFollows = *next == name && std::next(next) != arguments.end();
      result.push_back(std::move(*next));
      if (valueFollows) result.push_back(std::move(*++next));
    }
  }
  return result;
}

// The name of the option that the unknown one was probably meant to be.
std::string suggestedOption(const Command& command, std::string_view unknown) {
  std::vector<std::string_view> names;
  for (const Option& option : command.options) names.push_back(option.name);
  return suggestion(unknown.substr(0, unknown.find('=')), names);
}

}  // namespace

ArgumentParser::ArgumentParser(const Command& command, int argc, const char* const* argv)
    : command_(command) {
  CLI::App app;
  for (const Option& option : command.options) addOption(app, option);
  for (const Option& option : command.hiddenOptions) addOption(app, option);
  // An option for any number of values, or one that is bound to a vector, would have CLI11 split
  // "[a,b]" into two of them. One for as many values as there are arguments takes them as they
  // stand.
  const auto* operands = app.add_option(std::string(command.operand))
                             ->expected(std::max(argc, 1))
                             ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  try {
    auto arguments =
        withEmptyValues(app, std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
    std::reverse(arguments.begin(), arguments.end());  // the order in which CLI11 takes them
    app.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    isHelpWanted_ = true;
    return;
  } catch (const CLI::ExtrasError&) {
    const std::string unknown = app.remaining().front();
    throw failure("unknown option " + unknown, suggestedOption(command, unknown));
  } catch (const CLI::ParseError& error) {
    throw failure(error.what());
  }
  operands_ = operands->results();
  for (const auto& options : {command.options, command.hiddenOptions}) {
    for (const Option& option : options) {
      const std::string name(option.name);
      const CLI::Option* const read = app.get_option(name);
      if (read->count() > 0) values_.emplace(name, read->results());
    }
  }
}

std::optional<std::string> ArgumentParser::valueOf(std::string_view option) const {
  const auto entry = values_.find(option);
  if (entry == values_.end()) return std::nullopt;
  return entry->second.back();
}

std::vector<std::string> ArgumentParser::valuesOf(std::string_view option) const {
  const auto entry = values_.find(option);
  return entry == values_.end() ? std::vector<std::string>() : entry->second;
}

Failure ArgumentParser::failure(const std::string& message, const std::string& hint) const {
  return Failure(message +
                 (hint.empty() ? "; see " + std::string(command_.name) + " --help" : hint));
}

Failure ArgumentParser::invalidValue(std::string_view option, std::string_view value) const {
  const auto row = std::find_if(command_.options.begin(), command_.options.end(),
                                [option](const Option& known) { return known.name == option; });
  const std::string message = std::string(option) + ": invalid value '" + std::string(value) + "'";
  if (row->words == nullptr) return Failure(message + "; use " + std::string(row->values));
  const std::vector<std::string_view> words = row->words();
  return Failure(message + suggestion(value, words) + " (one of " + joined(words, ", ") + ")");
}

std::optional<std::string> outputFileOf(const ArgumentParser& arguments) {
  const std::optional<std::string> file = arguments.valueOf("--output");
  return file == "-" ? std::nullopt : file;
}

}  // namespace host
