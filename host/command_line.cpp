#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

#include "option_values.h"
#include "options.h"
#include "output.h"
#include "platform.h"

namespace host {

namespace {

constexpr unsigned kMaxJobs = 256;

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

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (&part != &parts.front()) text += separator;
    text += part;
  }
  return text;
}

Failure usageFailure(const std::string& message) {
  return Failure(message + "; see quorl-js --help");
}

void addOption(CLI::App& app, const Option& option) {
  std::string names(option.name);
  if (!option.shortName.empty()) names.append(",").append(option.shortName);
  if (option.name == "--help") {
    app.set_help_flag(names)->disable_flag_override();
  } else if (option.argument.empty()) {
    app.add_flag(names)->disable_flag_override();
  } else {
    CLI::Option* const added = app.add_option(names)->type_name(std::string(option.argument));
    if (option.mayRepeat) added->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  }
  if (!option.neededName.empty()) {  // it stands before this one in the table
    app.get_option(std::string(option.name))->needs(app.get_option(std::string(option.neededName)));
  }
}

bool isGiven(const CLI::App& app, const char* name) { return app.get_option(name)->count() > 0; }

// The value of an option that may be given once.
std::optional<std::string> valueOf(const CLI::App& app, const char* name) {
  const CLI::Option* option = app.get_option(name);
  if (option->count() == 0) return std::nullopt;
  return option->results().front();
}

// Calls take with the value of the option, if it is given.
template <typename Take>
void withValue(const CLI::App& app, const char* name, Take take) {
  const std::optional<std::string> value = valueOf(app, name);
  if (value && !take(*value)) throw usageFailure(std::string(name) + " cannot be " + *value);
}

bool takeJobs(const std::string& text, unsigned& jobs) {
  return parseNumber(text, jobs) && jobs >= 1 && jobs <= kMaxJobs;
}

bool takeSeconds(const std::string& text, std::chrono::microseconds& time) {
  const std::optional<std::chrono::microseconds> value = parseSeconds(text);
  if (value) time = *value;
  return value.has_value();
}

bool takeSize(const std::string& text, std::uint64_t& size) {
  const std::optional<std::uint64_t> value = parseSize(text);
  if (value) size = *value;
  return value.has_value();
}

bool takeDepth(const std::string& text, std::optional<std::size_t>& depth) {
  unsigned levels = 0;
  if (!parseNumber(text, levels)) return false;
  depth = levels;
  return true;
}

bool takeColor(const std::string& text, Color& color) {
  constexpr std::array<std::pair<std::string_view, Color>, 3> kColors = {
      {{"auto", Color::kAuto}, {"always", Color::kAlways}, {"never", Color::kNever}}};
  const auto* const row = std::find_if(kColors.begin(), kColors.end(),
                                       [&](const auto& known) { return known.first == text; });
  if (row == kColors.end()) return false;
  color = row->second;
  return true;
}

bool takeFormat(const std::string& text, const Format*& format) {
  format = findFormat(text);
  return format != nullptr;
}

void readLimits(const CLI::App& app, FileLimits& limits) {
  constexpr std::uint64_t kMinMemory = std::uint64_t{64} << 20U;
  withValue(app, "--timeout", [&](const auto& text) { return takeSeconds(text, limits.time); });
  withValue(app, "--max-memory", [&](const auto& text) {
    return takeSize(text, limits.memory) && (limits.memory == 0 || limits.memory >= kMinMemory);
  });
  withValue(app, "--max-output",
            [&](const auto& text) { return takeSize(text, limits.answerBytes); });
  withValue(app, "--max-size",
            [&](const auto& text) { return takeSize(text, limits.sourceBytes); });
}

}  // namespace

CommandLine readCommandLine(int argc, const char* const* argv) {
  CLI::App app;
  for (const Option& option : kProgram.options) addOption(app, option);
  app.add_option("--generate");  // for the build, and told to nobody
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

  result.version = isGiven(app, "--version");
  result.generate = valueOf(app, "--generate");
  result.files = files->results();
  result.list = valueOf(app, "--files-from");
  if (isGiven(app, "--null")) result.listNameEnd = NameEnd::kNul;
  result.recursive = isGiven(app, "--recursive");
  result.walkRules.hidden = isGiven(app, "--hidden");
  result.walkRules.nodeModules = isGiven(app, "--node-modules");
  result.outDirectory = valueOf(app, "--out-dir");
  result.defines = join(app.get_option("--defines")->results(), "\n");
  result.plugin = valueOf(app, "--plugin");
  result.diagnostics = valueOf(app, "--diagnostics").value_or(result.diagnostics);
  result.format = findFormat("raw");
  withValue(app, "--format", [&](const auto& text) { return takeFormat(text, result.format); });
  withValue(app, "--depth", [&](const auto& text) { return takeDepth(text, result.depth); });
  result.onlyLabels = join(app.get_option("--only")->results(), ",");
  for (const char* const name : {"--depth", "--only"}) {
    if (isGiven(app, name) && result.format->name != "tree") {
      throw usageFailure(std::string(name) + " requires --format tree");
    }
  }
  result.times = isGiven(app, "--times");
  result.jobs = std::min(availableCores(), kMaxJobs);
  withValue(app, "--jobs", [&](const auto& text) { return takeJobs(text, result.jobs); });
  // A large file may well need gigabytes: its tree takes far more than its text.
  result.limits.memory = machineMemory();
  readLimits(app, result.limits);
  result.strict = isGiven(app, "--strict");
  result.quiet = isGiven(app, "--quiet");
  result.progress = !isGiven(app, "--no-progress");
  withValue(app, "--color", [&](const auto& text) { return takeColor(text, result.color); });
  const bool needsFile = !result.version && !result.generate && !result.list;
  if (needsFile && result.files.empty()) throw usageFailure("no FILE given");
  return result;
}

}  // namespace host
