#include "cli/argument_parser.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
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

// The command's arguments before CLI11 reads them, as far as its own reading or its messages would
// be of no help.
class RawArguments {
 public:
  RawArguments(const Command& command, std::vector<std::string> arguments)
      : command_(command), arguments_(std::move(arguments)) {}

  // What is wrong with them, in words of the option table; nothing if CLI11 may look.
  std::string fault() const {
    for (std::size_t at = 0; at < arguments_.size() && arguments_[at] != "--"; ++at) {
      const std::string& argument = arguments_[at];
      if (argument.starts_with("--")) {
        const std::size_t equals = argument.find('=');
        const Option* const option = find(argument.substr(0, equals));
        if (option == nullptr) continue;
        if (!option->argument.empty()) {
          if (equals == std::string::npos && ++at == arguments_.size()) return missing(*option);
        } else if (equals != std::string::npos && equals + 1 < argument.size()) {
          return std::string(option->name) + ": takes no value";
        }
      } else if (const Option* const option = lastShort(argument)) {
        if (++at == arguments_.size()) return missing(*option);
      }
    }
    return {};
  }

  // CLI11 reads "--name=" as "--name" and would take the argument behind it for the value, so an
  // empty value becomes an argument of its own.
  std::vector<std::string> withEmptyValues() const {
    std::vector<std::string> result;
    for (auto next = arguments_.begin(); next != arguments_.end(); ++next) {
      if (*next == "--") {
        std::copy(next, arguments_.end(), std::back_inserter(result));
        break;
      }
      const std::string name = next->substr(0, next->find('='));
      const Option* const option = name.starts_with("--") ? find(name) : nullptr;
      if (option == nullptr || option->argument.empty()) {
        result.push_back(*next);
      } else if (*next == name + "=") {
        result.insert(result.end(), {name, ""});
      } else {
        result.push_back(*next);
        const bool valueFollows = *next == name && std::next(next) != arguments_.end();
        if (valueFollows) result.push_back(*++next);
      }
    }
    return result;
  }

  // The argument as it was typed, of which CLI11 left the rest: "-recursive" of "-ecursive".
  std::string typed(const std::string& rest) const {
    const std::string_view end = std::string_view(rest).substr(1);
    const auto isWhole = [&](const std::string& argument) {
      return argument.starts_with('-') && !argument.starts_with("--") && argument.ends_with(end);
    };
    if (rest.starts_with("--")) return rest;
    const auto found = std::find_if(arguments_.begin(), arguments_.end(), isWhole);
    return found == arguments_.end() ? rest : *found;
  }

 private:
  const Option* find(std::string_view name) const {
    for (const auto& options : {command_.options, command_.hiddenOptions}) {
      for (const Option& option : options) {
        if (option.name == name || option.shortName == name) return &option;
      }
    }
    return nullptr;
  }

  // The option with a value with which a group of short options ends, so that the value is another
  // argument.
  const Option* lastShort(std::string_view argument) const {
    if (!argument.starts_with('-')) return nullptr;
    for (std::size_t at = 1; at < argument.size(); ++at) {
      const Option* const option = find(std::string{'-', argument[at]});
      if (option == nullptr) return nullptr;
      if (!option->argument.empty()) return at + 1 == argument.size() ? option : nullptr;
    }
    return nullptr;
  }

  static std::string missing(const Option& option) {
    return std::string(option.name) + ": " + std::string(option.argument) + " is missing";
  }

  const Command& command_;
  std::vector<std::string> arguments_;
};

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
  const RawArguments raw(command, {argv + std::min(argc, 1), argv + argc});
  const std::string fault = raw.fault();
  if (!fault.empty()) throw failure(fault);
  try {
    std::vector<std::string> arguments = raw.withEmptyValues();
    std::reverse(arguments.begin(), arguments.end());  // the order in which CLI11 takes them
    app.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    isHelpWanted_ = true;
    return;
  } catch (const CLI::ExtrasError&) {
    const std::string unknown = raw.typed(app.remaining().front());
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
