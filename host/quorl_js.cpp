// quorl-js: the plug-in for the command line. It uses the module through its C face only and so
// shows what a host has to do: copy or print an answer before the next call, keep its own standard
// output away from the module's, and clean up at the end.

#include <algorithm>
#include <array>
#include <csignal>
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
#include "help_text.h"
#include "man_page.h"
#include "merge.h"
#include "name_list.h"
#include "output.h"
#include "plugin_module.h"

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
    GeneratedText{"man", manPage}, GeneratedText{"zsh", zshCompletion}};

std::string generatedText(const std::string& kind) {
  const auto* const row =
      std::find_if(kGeneratedTexts.begin(), kGeneratedTexts.end(),
                   [&](const GeneratedText& text) { return text.kind == kind; });
  if (row == kGeneratedTexts.end()) throw Failure("nothing to generate is called " + kind);
  return row->make();
}

PluginModule loadPlugin(const CommandLine& commandLine) {
  return PluginModule(commandLine.plugin ? *commandLine.plugin : findPlugin());
}

std::string versions(const PluginModule& plugin) {
  const char* const info = plugin.info();
  if (info == nullptr) throw Failure("no memory for the plug-in's version");
  return "quorl-js " QUORL_VERSION "\n" + std::string(info);
}

std::vector<std::string> namesOf(const CommandLine& commandLine) {
  std::vector<std::string> names = commandLine.files;
  if (commandLine.list) {
    auto listed = readNameList(*commandLine.list, commandLine.listNameEnd);
    std::move(listed.begin(), listed.end(), std::back_inserter(names));
  }
  return names;
}

int runBatch(const CommandLine& commandLine, Output& output) {
  const std::vector<std::string> names = namesOf(commandLine);
  std::optional<AnswerDirectory> answerDirectory;
  if (commandLine.outDirectory) answerDirectory.emplace(*commandLine.outDirectory);
  const PluginModule plugin = loadPlugin(commandLine);
  const bool allGood = answerFiles(names, commandLine, plugin, output,
                                   answerDirectory ? &*answerDirectory : nullptr);
  return allGood ? kAllGood : kFileFailed;
}

int run(const CommandLine& commandLine) {
  Output output(commandLine.diagnostics);
  int status = kAllGood;
  if (commandLine.help) {
    output.write(helpText());
  } else if (commandLine.generate) {
    output.write(generatedText(*commandLine.generate));
  } else if (commandLine.version) {
    output.write(versions(loadPlugin(commandLine)));
  } else {
    status = runBatch(commandLine, output);
  }
  output.checkDiagnostics();
  output.close();
  return status;
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
  // A reader that has gone and a limit on the size of files are noticed where answers are written.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    if (argc > 1 && argv[1] == std::string_view("merge")) return host::runMerge(argc - 1, argv + 1);
    return host::run(host::readCommandLine(argc, argv));
  } catch (const std::exception& failure) {
    host::complain(failure.what());
    return host::kRunFailed;
  }
}
