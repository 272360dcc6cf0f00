// quorl-js: the plug-in on the command line. It uses the module through its C header only, in
// worker processes: the module writes to standard output, keeps what it has read and may crash, and
// none of that is to reach the user.

#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <exception>
#include <string>
#include <string_view>

#include "cli/completions.h"
#include "cli/help_text.h"
#include "cli/man_page.h"
#include "cli/markdown_tables.h"
#include "cli/option_table.h"
#include "cli/run_options.h"
#include "indexing/commands.h"
#include "lsp/lsp.h"
#include "merge/merge.h"
#include "run/command_help.h"
#include "run/exit_status.h"
#include "run/file_run.h"
#include "run/output.h"
#include "system/failure.h"
#include "system/io.h"
#include "system/messages.h"
#include "system/signals.h"
#include "view/view.h"

namespace host {
namespace {

std::string manPageOfInput() { return manPage(readToEnd(STDIN_FILENO, "standard input")); }

struct GeneratedText {
  std::string_view kind;
  std::string (*make)();
};

// What the build makes out of the tables of options.
constexpr std::array kGeneratedTexts = {
    GeneratedText{"bash", bashCompletion}, GeneratedText{"fish", fishCompletion},
    GeneratedText{"man", manPageOfInput}, GeneratedText{"tables", markdownTables},
    GeneratedText{"zsh", zshCompletion}};

std::string generatedText(const std::string& kind) {
  const auto* const row =
      std::find_if(kGeneratedTexts.begin(), kGeneratedTexts.end(),
                   [&](const GeneratedText& text) { return text.kind == kind; });
  if (row == kGeneratedTexts.end()) throw Failure("cannot generate " + kind);
  return row->make();
}

// The commands that the first argument names.
struct CommandRun {
  std::string_view word;
  int (*run)(int argc, const char* const* argv);
};

constexpr std::array kCommands = {CommandRun{"merge", runMerge},   CommandRun{"lsp", runLsp},
                                  CommandRun{"index", runIndex},   CommandRun{"query", runQuery},
                                  CommandRun{"status", runStatus}, CommandRun{"view", runView}};

int run(const RunOptions& options) {
  if (options.help) return printHelp(kProgram);
  if (!options.generate && !options.version) return runFiles(options);
  Output output;
  int status = kSuccess;
  if (options.generate) {
    output.write(generatedText(*options.generate));
  } else {
    status = printVersions(options, output);
  }
  output.close();
  return status;
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
  // Let write fail with EPIPE or EFBIG instead of ending by the signal.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  host::endRunOnSignals();
  try {
    const std::string_view word = argc > 1 ? argv[1] : "";
    const auto* const command =
        std::find_if(host::kCommands.begin(), host::kCommands.end(),
                     [word](const host::CommandRun& row) { return row.word == word; });
    if (command != host::kCommands.end()) return command->run(argc - 1, argv + 1);
    return host::run(host::parseRunOptions(argc, argv));
  } catch (const host::BrokenPipe&) {
    host::endByBrokenPipe();
  } catch (const std::exception& failure) {
    host::printMessage(failure.what());
    return host::kRunFailed;
  }
}
