#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "output.h"

namespace host {

const std::string_view kHelp = R"(Usage: quorl-js FILE... [OPTION]...

Prints the structure records of each FILE on standard output, one answer after the other.

Options:
  --defines NAME       a name for the record of the defines; may be given several times
  --plugin PATH        the plug-in module to load instead of the one that came with quorl-js
  --diagnostics WHERE  where the plug-in's diagnostic lines go: none (as without this option),
                       stderr, or the name of a file, which is overwritten
  --help               print this text and stop
  --version            print the versions of quorl-js and of the plug-in and stop
  --                   every argument behind it is a FILE

Exit status:
  0  every file was read
  1  a file was not: its error answer is printed as its answer, the message on standard error
  2  wrong usage, no working plug-in, or output that could not be written
)";

namespace {

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

std::string join(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += (&line == &lines.front() ? "" : "\n") + line;
  return text;
}

Failure usageFailure(const std::string& message) {
  return Failure(message + "; see quorl-js --help");
}

}  // namespace

CommandLine readCommandLine(int argc, const char* const* argv) {
  CLI::App app;
  app.set_help_flag("--help")->disable_flag_override();
  const auto* version = app.add_flag("--version")->disable_flag_override();
  const auto* defines = app.add_option("--defines")
                            ->type_name("NAME")
                            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  const auto* plugin = app.add_option("--plugin")->type_name("PATH");
  const auto* diagnostics = app.add_option("--diagnostics")->type_name("WHERE");
  // An option for any number of values would have CLI11 split "[a,b]" into two of them. One for as
  // many values as there are arguments takes them as they stand.
  const auto* files = app.add_option("FILE")
                          ->expected(std::max(argc, 1))
                          ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);

  CommandLine result;
  try {
    auto arguments =
        withEmptyValues(app, std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
    std::reverse(arguments.begin(), arguments.end());  // the order in which CLI11 takes them
    app.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    result.help = true;
    return result;
  } catch (const CLI::ExtrasError&) {
    throw usageFailure("unknown option " + app.remaining().front());
  } catch (const CLI::ParseError& error) {
    throw usageFailure(error.what());
  }

  result.version = version->count() > 0;
  result.files = files->results();
  result.defines = join(defines->results());
  if (plugin->count() > 0) result.plugin = plugin->results().front();
  if (diagnostics->count() > 0) result.diagnostics = diagnostics->results().front();
  if (result.files.empty() && !result.version) throw usageFailure("no FILE given");
  return result;
}

}  // namespace host
