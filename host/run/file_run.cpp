#include "run/file_run.h"

#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "run/answer_directory.h"
#include "run/batch.h"
#include "run/diagnostics.h"
#include "run/exit_status.h"
#include "run/output.h"
#include "sources/input_list.h"
#include "sources/name_list.h"
#include "sources/standard_input.h"
#include "system/failure.h"
#include "system/file_paths.h"
#include "system/messages.h"
#include "system/platform.h"
#include "workers/plugin_module.h"
#include "workers/plugin_version.h"
#include "workers/worker.h"

namespace host {
namespace {

std::vector<std::string> namesOf(const RunOptions& options) {
  std::vector<std::string> names = options.files;
  if (options.list) {
    auto listed = readNameList(*options.list, options.listNameEnd);
    if (hasWindowsLineEnds(listed))
      printMessage("list " + *options.list + ": lines " + kLineEndHint);
    std::move(listed.begin(), listed.end(), std::back_inserter(names));
  }
  return names;
}

// Nothing may be written to two times, and the list not at all.
void checkFilesDiffer(const RunOptions& options, const Diagnostics& diagnostics) {
  const std::optional<std::string> lines = diagnostics.file();
  if (options.list) {
    const std::string list = *options.list == "-" ? "/dev/stdin" : *options.list;
    if (options.outputFile && isSameFile(*options.outputFile, list)) {
      throw Failure(*options.outputFile + ": is the list and the output");
    }
    if (lines && isSameFile(*lines, list)) {
      throw Failure(*lines + ": is the list and the diagnostics file");
    }
  }
  if (options.outputFile && lines && isSameFile(*options.outputFile, *lines)) {
    throw Failure(*lines + ": is the output and the diagnostics file");
  }
}

// Where the output is; for standard output the current directory.
std::string folderOfOutput(const RunOptions& options) {
  namespace fs = std::filesystem;
  fs::path folder = options.outDirectory.value_or("");
  if (options.outputFile) folder = fs::path(*options.outputFile).parent_path();
  std::error_code error;
  return fs::canonical(folder.empty() ? fs::path(".") : folder, error).string();
}

FormatSettings settingsFor(const RunOptions& options) {
  FormatSettings settings;
  const bool isForFiles = options.outDirectory && options.color == Color::kAuto;
  settings.color = !isForFiles && isColorWanted(options.color);
  settings.depth = options.depth;
  settings.onlyLabels = options.onlyLabels;
  settings.onlyKinds = options.onlyKinds;
  settings.ranges = options.ranges;
  settings.tagsFolder = folderOfOutput(options);
  if (!options.outDirectory) {
    settings.width = terminalWidth(STDOUT_FILENO);
    settings.escapeControlBytes = settings.width != 0;
  }
  return settings;
}

WorkerTask taskFor(const RunOptions& options, const Diagnostics& diagnostics) {
  WorkerTask task = commonTask(options, diagnostics);
  task.format = options.format;
  task.settings = settingsFor(options);
  task.wholeDocuments = options.outDirectory.has_value();
  task.times = options.times;
  task.findsOmissions = !options.quiet || options.strict || options.format->isJson;
  task.keepsSources = task.findsOmissions || options.format->needsSource || options.ranges;
  return task;
}

// The first line of the module's text, without the address of its code, which only a host in the
// same process has a use for.
std::string withoutAddress(const std::string& version) {
  const std::string line = version.substr(0, version.find('\n'));
  return line.substr(0, line.find(" (Address: "));
}

std::string extensionFor(const Format& format) {
  return format.name == "raw" ? ".records" : "." + std::string(format.name);
}

}  // namespace

int runFiles(const RunOptions& options) {
  std::optional<Output> output;
  if (!options.outDirectory) output.emplace(options.outputFile);
  Diagnostics diagnostics(options.diagnostics);
  checkFilesDiffer(options, diagnostics);
  std::optional<AnswerDirectory> answerDirectory;
  const std::vector<std::string> names = namesOf(options);
  if (options.outDirectory) {
    answerDirectory.emplace(*options.outDirectory, extensionFor(*options.format));
  }
  std::optional<StandardInputCopy> copy;
  if (options.stdinName) copy.emplace(*options.stdinName, options.limits.sourceBytes);
  const Inputs inputs = copy
                            ? inputCalled(*options.stdinName, copy->path())
                            : findInputs(names, options.walkRules,
                                         {.file = options.outputFile,
                                          .output = output ? STDOUT_FILENO : -1,
                                          .diagnosticsFile = diagnostics.file(),
                                          .diagnostics = diagnostics.areKept() ? STDERR_FILENO : -1,
                                          .directory = options.outDirectory.value_or("")});
  diagnostics.begin();
  if (output) output->begin();
  WorkerTask task = taskFor(options, diagnostics);
  task.inputs = &inputs;
  task.settings.fileCount = inputs.reportCount;
  if (!answerDirectory && inputs.all.size() == 1 && inputs.fileCount == 1) {
    task.wholeDocuments = true;
    task.writesOutput = true;
  }
  const bool isGood = answerFiles(task, options, diagnostics,
                                  {.output = output ? &*output : nullptr,
                                   .directory = answerDirectory ? &*answerDirectory : nullptr});
  if (output) output->close();
  return isGood ? kSuccess : kFileFailed;
}

int printVersions(const RunOptions& options, Output& output) {
  Diagnostics diagnostics(options.diagnostics);
  diagnostics.begin();
  const Version version = askVersion(taskFor(options, diagnostics));
  output.write("quorl-js " QUORL_VERSION "\n" + withoutAddress(version.text) +
               "\nplug-in: " + pluginPath(options.plugin) + "\n");
  if (version.diagnosticsLost) throw diagnostics.failure();
  return kSuccess;
}

}  // namespace host
