// quorl-js: the plug-in for the command line. It uses the module through its C face only, in
// processes of their own: the module writes on standard output, keeps what it has read and may end
// its process, and none of that is to reach who runs this program.

#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "answer_directory.h"
#include "batch.h"
#include "command_line.h"
#include "completions.h"
#include "diagnostics.h"
#include "help_text.h"
#include "inputs.h"
#include "man_page.h"
#include "merge.h"
#include "name_list.h"
#include "option_tables.h"
#include "options.h"
#include "output.h"
#include "platform.h"
#include "plugin_module.h"
#include "run_end.h"
#include "worker.h"
#include "worker_process.h"

namespace host {
namespace {

constexpr int kAllGood = 0;
constexpr int kFileFailed = 1;
constexpr int kRunFailed = 2;

struct GeneratedText {
  std::string_view kind;
  std::string (*make)();
};

constexpr std::array kGeneratedTexts = {
    GeneratedText{"bash", bashCompletion}, GeneratedText{"fish", fishCompletion},
    GeneratedText{"man", manPage}, GeneratedText{"tables", optionTables},
    GeneratedText{"zsh", zshCompletion}};

std::string generatedText(const std::string& kind) {
  const auto* const row =
      std::find_if(kGeneratedTexts.begin(), kGeneratedTexts.end(),
                   [&](const GeneratedText& text) { return text.kind == kind; });
  if (row == kGeneratedTexts.end()) throw Failure("nothing to generate is called " + kind);
  return row->make();
}

std::vector<std::string> namesOf(const CommandLine& commandLine) {
  std::vector<std::string> names = commandLine.files;
  if (commandLine.list) {
    auto listed = readNameList(*commandLine.list, commandLine.listNameEnd);
    std::move(listed.begin(), listed.end(), std::back_inserter(names));
  }
  return names;
}

bool isColorWanted(const CommandLine& commandLine) {
  if (commandLine.color != Color::kAuto) return commandLine.color == Color::kAlways;
  if (commandLine.outDirectory) return false;
  const char* const noColor = std::getenv("NO_COLOR");
  return terminalWidth(STDOUT_FILENO) != 0 && (noColor == nullptr || *noColor == '\0');
}

FormatSettings settingsFor(const CommandLine& commandLine) {
  FormatSettings settings;
  settings.color = isColorWanted(commandLine);
  settings.depth = commandLine.depth;
  settings.onlyLabels = commandLine.onlyLabels;
  if (!commandLine.outDirectory) {
    settings.width = terminalWidth(STDOUT_FILENO);
    settings.escapeControlBytes = settings.width != 0;
  }
  return settings;
}

WorkerTask taskFor(const CommandLine& commandLine, const Diagnostics& diagnostics) {
  WorkerTask task;
  task.plugin = commandLine.plugin ? *commandLine.plugin : findPlugin();
  task.defines = commandLine.defines;
  task.limits = commandLine.limits;
  task.diagnostics = diagnostics.descriptor();
  task.format = commandLine.format;
  task.settings = settingsFor(commandLine);
  task.wholeDocuments = commandLine.outDirectory.has_value();
  task.times = commandLine.times;
  task.quiet = commandLine.quiet;
  return task;
}

int tellVersions(const CommandLine& commandLine, Output& output) {
  const Diagnostics diagnostics(commandLine.diagnostics);
  diagnostics.begin();
  const Version version = askVersion(taskFor(commandLine, diagnostics));
  output.write("quorl-js " QUORL_VERSION "\n" + version.text);
  if (version.diagnosticsLost) throw diagnostics.failure();
  return kAllGood;
}

std::string extensionFor(const Format& format) {
  return format.name == "raw" ? ".records" : "." + std::string(format.name);
}

// Without output, which is null then, there is a directory for it.
int runBatch(const CommandLine& commandLine, Output* output) {
  const Diagnostics diagnostics(commandLine.diagnostics);
  const std::vector<std::string> names = namesOf(commandLine);
  std::optional<AnswerDirectory> answerDirectory;
  if (commandLine.outDirectory) {
    answerDirectory.emplace(*commandLine.outDirectory, extensionFor(*commandLine.format));
  }
  const Inputs inputs =
      findInputs(names, commandLine,
                 {.output = output == nullptr ? -1 : STDOUT_FILENO,
                  .diagnostics = diagnostics.areKept() ? diagnostics.descriptor() : -1,
                  .directory = commandLine.outDirectory.value_or("")});
  WorkerTask task = taskFor(commandLine, diagnostics);
  task.inputs = &inputs;
  task.settings.fileCount = inputs.reportCount;
  if (!answerDirectory && inputs.all.size() == 1 && inputs.fileCount == 1) {
    task.wholeDocuments = true;
    task.writesOutput = true;
  }
  diagnostics.begin();
  const bool isGood = answerFiles(task, commandLine, diagnostics, output,
                                  answerDirectory ? &*answerDirectory : nullptr);
  return isGood ? kAllGood : kFileFailed;
}

int run(const CommandLine& commandLine) {
  const bool writesAnswers = !commandLine.help && !commandLine.generate && !commandLine.version;
  if (writesAnswers && commandLine.outDirectory) return runBatch(commandLine, nullptr);
  Output output;
  int status = kAllGood;
  if (commandLine.help) {
    output.write(helpText(kProgram));
  } else if (commandLine.generate) {
    output.write(generatedText(*commandLine.generate));
  } else if (commandLine.version) {
    status = tellVersions(commandLine, output);
  } else {
    status = runBatch(commandLine, &output);
  }
  output.close();
  return status;
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
  // A reader that has gone and a limit on the size of files are noticed where answers are written.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  host::endRunOnSignals();
  try {
    if (argc > 1 && argv[1] == std::string_view("merge")) return host::runMerge(argc - 1, argv + 1);
    return host::run(host::readCommandLine(argc, argv));
  } catch (const std::exception& failure) {
    host::complain(failure.what());
    return host::kRunFailed;
  }
}
