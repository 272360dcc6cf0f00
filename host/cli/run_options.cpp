#include "cli/run_options.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "cli/argument_parser.h"
#include "cli/option_table.h"
#include "cli/value_parsers.h"
#include "system/memory_budget.h"
#include "system/platform.h"

namespace host {
namespace {

constexpr unsigned kMaxJobs = 256;

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (&part != &parts.front()) text += separator;
    text += part;
  }
  return text;
}

// Calls take with the value of the option, if it is given.
template <typename Take>
void withValue(const ArgumentParser& arguments, const char* name, Take take) {
  const std::optional<std::string> value = arguments.valueOf(name);
  if (value && !take(*value)) throw arguments.failure(std::string(name) + " cannot be " + *value);
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

}  // namespace

RunOptions parseRunOptions(int argc, const char* const* argv) {
  const ArgumentParser arguments(kProgram, argc, argv);
  RunOptions result;
  result.help = arguments.isHelpWanted();
  if (result.help) return result;

  result.version = arguments.isGiven("--version");
  result.generate = arguments.valueOf("--generate");
  result.files = arguments.operands();
  result.list = arguments.valueOf("--files-from");
  if (arguments.isGiven("--null")) result.listNameEnd = NameEnd::kNul;
  result.walkRules.recursive = arguments.isGiven("--recursive");
  result.walkRules.hidden = arguments.isGiven("--hidden");
  result.walkRules.nodeModules = arguments.isGiven("--node-modules");
  result.outDirectory = arguments.valueOf("--out-dir");
  result.defines = join(arguments.valuesOf("--defines"), "\n");
  result.plugin = arguments.valueOf("--plugin");
  result.diagnostics = arguments.valueOf("--diagnostics").value_or(result.diagnostics);
  result.format = findFormat("raw");
  withValue(arguments, "--format",
            [&](const auto& text) { return takeFormat(text, result.format); });
  withValue(arguments, "--depth", [&](const auto& text) { return takeDepth(text, result.depth); });
  result.onlyLabels = join(arguments.valuesOf("--only"), ",");
  for (const char* const name : {"--depth", "--only"}) {
    if (arguments.isGiven(name) && result.format->name != "tree") {
      throw arguments.failure(std::string(name) + " requires --format tree");
    }
  }
  result.times = arguments.isGiven("--times");
  result.jobs = std::min(availableCores(), kMaxJobs);
  withValue(arguments, "--jobs", [&](const auto& text) { return takeJobs(text, result.jobs); });
  readLimits(arguments, result.limits);
  // A large file may well need gigabytes: its tree takes far more than its text.
  if (!arguments.isGiven("--max-memory")) result.limits.memoryBudget = memoryBudget();
  result.strict = arguments.isGiven("--strict");
  result.quiet = arguments.isGiven("--quiet");
  result.progress = !arguments.isGiven("--no-progress");
  withValue(arguments, "--color", [&](const auto& text) { return takeColor(text, result.color); });
  const bool needsFile = !result.version && !result.generate && !result.list;
  if (needsFile && result.files.empty()) throw arguments.failure("no FILE given");
  return result;
}

}  // namespace host
