#include "indexing/recorded_options.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <string_view>

#include "cli/option_table.h"
#include "sources/name_list.h"
#include "system/failure.h"

namespace host::indexing {
namespace {

constexpr std::array<std::string_view, 15> kRecorded = {
    "--recursive", "--hidden",  "--node-modules", "--no-ignore",  "--binary",
    "--include",   "--exclude", "--files-from",   "--null",       "--defines",
    "--plugin",    "--timeout", "--max-memory",   "--max-output", "--max-size"};

bool isRecorded(const Option& option) {
  return std::find(kRecorded.begin(), kRecorded.end(), option.name) != kRecorded.end();
}

// A list that was read from standard input cannot be read again.
bool isPassingList(const ArgumentParser& arguments) {
  return arguments.valueOf("--files-from") == "-";
}

std::vector<std::string> recordedArguments(const ArgumentParser& arguments,
                                           const std::vector<std::string>& names) {
  std::vector<std::string> recorded;
  for (const Option& option : kIndex.options) {
    if (!isRecorded(option) || !arguments.isGiven(option.name)) continue;
    const bool isOfList = option.name == "--files-from" || option.name == "--null";
    if (isOfList && isPassingList(arguments)) continue;
    if (option.argument.empty()) {
      recorded.emplace_back(option.name);
      continue;
    }
    for (const std::string& value : arguments.valuesOf(option.name)) {
      recorded.push_back(std::string(option.name) + "=" + value);
    }
  }
  recorded.emplace_back("--");
  if (isPassingList(arguments)) {
    recorded.insert(recorded.end(), names.begin(), names.end());
  } else {
    const std::vector<std::string>& operands = arguments.operands();
    recorded.insert(recorded.end(), std::next(operands.begin()), operands.end());
  }
  return recorded;
}

// The operands without INDEX, and what the list names.
std::vector<std::string> namesOf(const ArgumentParser& arguments, const RunOptions& options) {
  const std::vector<std::string>& operands = arguments.operands();
  std::vector<std::string> names(std::next(operands.begin()), operands.end());
  if (options.list) {
    std::vector<std::string> listed = readNameList(*options.list, options.listNameEnd);
    std::move(listed.begin(), listed.end(), std::back_inserter(names));
  }
  return names;
}

// The recorded arguments as those of a command line.
ArgumentParser parserOf(const std::vector<std::string>& recorded) {
  std::vector<const char*> argv = {"index", "INDEX"};
  for (const std::string& argument : recorded) argv.push_back(argument.c_str());
  return ArgumentParser(kIndex, static_cast<int>(argv.size()), argv.data());
}

}  // namespace

Sources sourcesOf(const ArgumentParser& arguments) {
  Sources sources;
  readInputOptions(arguments, sources.options);
  readRunningOptions(arguments, sources.options);
  sources.folder = std::filesystem::current_path().string();
  sources.names = namesOf(arguments, sources.options);
  sources.arguments = recordedArguments(arguments, sources.names);
  return sources;
}

Sources recordedSources(const index::IndexReader& known) {
  Sources sources;
  sources.arguments = known.meta("argument");
  const std::vector<std::string> folder = known.meta("folder");
  if (sources.arguments.empty() || folder.empty()) {
    throw Failure(known.database().name() + ": was not built from files");
  }
  sources.folder = folder.front();
  std::error_code error;
  std::filesystem::current_path(sources.folder, error);
  if (error) throw systemFailure(sources.folder, error.value());
  const ArgumentParser recorded = parserOf(sources.arguments);
  readInputOptions(recorded, sources.options);
  sources.names = namesOf(recorded, sources.options);
  return sources;
}

Sources recordedSources(const index::IndexReader& known, const ArgumentParser& arguments) {
  Sources sources = recordedSources(known);
  readRunningOptions(arguments, sources.options);
  return sources;
}

void checkNoneIsRecorded(const ArgumentParser& arguments) {
  for (const Option& option : kIndex.options) {
    if (isRecorded(option) && arguments.isGiven(option.name)) {
      throw arguments.failure(std::string(option.name) + ": not without FILE");
    }
  }
}

}  // namespace host::indexing
