#include "cli/run_options.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>
#include <utility>

#include "cli/argument_parser.h"
#include "cli/option_table.h"
#include "cli/suggestion.h"
#include "cli/value_parsers.h"
#include "outline/item.h"
#include "records/labels.h"
#include "sources/globs.h"
#include "system/failure.h"
#include "system/memory_budget.h"
#include "system/platform.h"
#include "system/text_parts.h"

namespace host {
namespace {

constexpr unsigned kMaxJobs = 256;

// Calls take with the value of the option, if it is given. take gives false for one that cannot be.
template <typename Take>
void withValue(const ArgumentParser& arguments, const char* name, Take take) {
  const std::optional<std::string> value = arguments.valueOf(name);
  if (value && !take(*value)) throw arguments.invalidValue(name, *value);
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

bool takeFormat(const std::string& text, const Format*& format) {
  format = findFormat(text);
  return format != nullptr;
}

void readLimits(const ArgumentParser& arguments, FileLimits& limits) {
  constexpr std::uint64_t kMinMemory = std::uint64_t{64} << 20U;
  withValue(arguments, "--timeout",
            [&](const auto& text) { return takeSeconds(text, limits.time); });
  withValue(arguments, "--max-memory", [&](const auto& text) {
    return takeSize(text, limits.memory) && (limits.memory == 0 || limits.memory >= kMinMemory);
  });
  withValue(arguments, "--max-output",
            [&](const auto& text) { return takeSize(text, limits.answerBytes); });
  withValue(arguments, "--max-size",
            [&](const auto& text) { return takeSize(text, limits.sourceBytes); });
}

std::string isNoneOf(std::string_view value, std::span<const std::string_view> words) {
  return "--only: invalid value '" + std::string(value) + "'" + suggestion(value, words) +
         " (one of " + joined({words.begin(), words.end()}, ", ") + ")";
}

// Calls take with each of the words that --only names.
template <typename Take>
void readOnly(const ArgumentParser& arguments, std::span<const std::string_view> words, Take take) {
  for (const std::string& value : arguments.valuesOf("--only")) {
    if (value.empty()) throw Failure(isNoneOf(value, words));
    for (const std::string_view word : partsOf(value, ',')) {
      if (!take(word)) throw Failure(isNoneOf(word, words));
    }
  }
}

std::vector<std::string> readLabels(const ArgumentParser& arguments) {
  std::vector<std::string> labels;
  readOnly(arguments, kLabels, [&labels](std::string_view label) {
    const bool isKnown =
        isErrorLabel(label) || std::find(kLabels.begin(), kLabels.end(), label) != kLabels.end();
    if (isKnown) labels.emplace_back(label);
    return isKnown;
  });
  return labels;
}

std::optional<outline::KindSet> readKinds(const ArgumentParser& arguments) {
  if (!arguments.isGiven("--only")) return std::nullopt;
  const std::vector<std::string_view> words = outline::kindWords();
  outline::KindSet kinds;
  readOnly(arguments, words, [&](std::string_view word) {
    const auto found = std::find(words.begin(), words.end(), word);
    if (found != words.end()) kinds.set(static_cast<std::size_t>(found - words.begin()));
    return found != words.end();
  });
  return kinds;
}

std::vector<std::string> readGlobs(const ArgumentParser& arguments, const char* name) {
  std::vector<std::string> globs = arguments.valuesOf(name);
  for (const std::string& glob : globs) {
    if (!Globs::isUsable(glob)) throw arguments.invalidValue(name, glob);
  }
  [[maybe_unused]] const Globs compiled(globs);  // throws for one that is too large
  return globs;
}

// Refuses an option that means nothing to the format.
void checkFormat(const ArgumentParser& arguments, const char* option, const Format& format,
                 bool (*takesOption)(const Format& format)) {
  if (!arguments.isGiven(option) || takesOption(format)) return;
  std::string names;
  const std::vector<std::string_view> all = formatNames(takesOption);
  for (const std::string_view name : all) {
    if (!names.empty()) names += name == all.back() ? " or " : ", ";
    names += name;
  }
  throw Failure(std::string(option) + ": not with --format " + std::string(format.name) +
                "; use --format " + names);
}

void checkIsFileName(const std::string& name) {
  const std::string_view last = std::string_view(name).substr(name.rfind('/') + 1);
  if (last.empty() || last == "." || last == "..") {
    throw Failure("--stdin: '" + name + "' is not a name for a file");
  }
}

void checkTogether(const ArgumentParser& arguments, const RunOptions& options) {
  if (arguments.isGiven("--stdin") && (!options.files.empty() || options.list)) {
    throw arguments.failure("--stdin: not with FILE or --files-from");
  }
  if (arguments.isGiven("--output") && options.outDirectory) {
    throw arguments.failure("--output: not with --out-dir");
  }
  const bool needsFile =
      !options.version && !options.generate && !options.list && !options.stdinName;
  if (needsFile && options.files.empty()) throw arguments.failure("no FILE given");
}

}  // namespace

void readInputOptions(const ArgumentParser& arguments, RunOptions& options) {
  options.list = arguments.valueOf("--files-from");
  if (arguments.isGiven("--null")) options.listNameEnd = NameEnd::kNul;
  options.walkRules.recursive = arguments.isGiven("--recursive");
  options.walkRules.hidden = arguments.isGiven("--hidden");
  options.walkRules.nodeModules = arguments.isGiven("--node-modules");
  options.walkRules.ignored = arguments.isGiven("--no-ignore");
  options.walkRules.binary = arguments.isGiven("--binary");
  options.walkRules.included = readGlobs(arguments, "--include");
  options.walkRules.excluded = readGlobs(arguments, "--exclude");
  const std::vector<std::string> defines = arguments.valuesOf("--defines");
  options.defines = joined(std::vector<std::string_view>(defines.begin(), defines.end()), "\n");
  options.plugin = arguments.valueOf("--plugin");
  readLimits(arguments, options.limits);
  // A large file may well need gigabytes: its tree takes far more than its text.
  if (!arguments.isGiven("--max-memory")) options.limits.memoryBudget = memoryBudget();
}

void readRunningOptions(const ArgumentParser& arguments, RunOptions& options) {
  options.jobs = std::min(availableCores(), kMaxJobs);
  withValue(arguments, "--jobs", [&](const auto& text) { return takeJobs(text, options.jobs); });
  options.strict = arguments.isGiven("--strict");
  options.quiet = arguments.isGiven("--quiet");
  options.progress = !arguments.isGiven("--no-progress");
}

RunOptions parseRunOptions(int argc, const char* const* argv) {
  const ArgumentParser arguments(kProgram, argc, argv);
  RunOptions result;
  result.help = arguments.isHelpWanted();
  if (result.help) return result;

  result.version = arguments.isGiven("--version");
  result.generate = arguments.valueOf("--generate");
  result.files = arguments.operands();
  readInputOptions(arguments, result);
  readRunningOptions(arguments, result);
  result.stdinName = arguments.valueOf("--stdin");
  if (result.stdinName) checkIsFileName(*result.stdinName);
  result.outputFile = outputFileOf(arguments);
  result.outDirectory = arguments.valueOf("--out-dir");
  result.diagnostics = arguments.valueOf("--diagnostics").value_or(result.diagnostics);
  result.format = findFormat("raw");
  withValue(arguments, "--format",
            [&](const auto& text) { return takeFormat(text, result.format); });
  withValue(arguments, "--depth", [&](const auto& text) { return takeDepth(text, result.depth); });
  if (result.format->selection == Selection::kKinds) {
    result.onlyKinds = readKinds(arguments);
  } else {
    result.onlyLabels = readLabels(arguments);
  }
  checkFormat(arguments, "--depth", *result.format,
              [](const Format& format) { return format.hasLevels; });
  checkFormat(arguments, "--only", *result.format,
              [](const Format& format) { return format.selection != Selection::kNothing; });
  checkFormat(arguments, "--times", *result.format,
              [](const Format& format) { return format.isJson; });
  checkFormat(arguments, "--ranges", *result.format,
              [](const Format& format) { return format.hasRanges; });
  result.ranges = arguments.isGiven("--ranges");
  result.times = arguments.isGiven("--times");
  result.color = readColor(arguments);
  checkTogether(arguments, result);
  return result;
}

Color readColor(const ArgumentParser& arguments) {
  constexpr std::array<std::pair<std::string_view, Color>, 3> kColors = {
      {{"auto", Color::kAuto}, {"always", Color::kAlways}, {"never", Color::kNever}}};
  const std::string text = arguments.valueOf("--color").value_or("auto");
  const auto* const row = std::find_if(kColors.begin(), kColors.end(),
                                       [&](const auto& known) { return known.first == text; });
  if (row == kColors.end()) throw arguments.invalidValue("--color", text);
  return row->second;
}

bool isColorWanted(Color color) {
  if (color != Color::kAuto) return color == Color::kAlways;
  const char* const noColor = std::getenv("NO_COLOR");
  return terminalWidth(STDOUT_FILENO) != 0 && (noColor == nullptr || *noColor == '\0');
}

}  // namespace host
