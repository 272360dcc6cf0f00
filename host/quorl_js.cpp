// quorl-js: the plug-in for the command line. It uses the module through its C face only and so
// shows what a host has to do: copy or print an answer before the next call, keep its own standard
// output away from the module's, and clean up at the end.

#include <csignal>
#include <exception>
#include <string>
#include <string_view>

#include "command_line.h"
#include "output.h"
#include "plugin_module.h"

namespace host {
namespace {

constexpr int kAllGood = 0;
constexpr int kFileFailed = 1;
constexpr int kRunFailed = 2;

constexpr std::string_view kRecordsOpening = "[\n";

// What is wrong with a file whose answer holds no records: the text of its error answer.
std::string errorMessage(const std::string& file, std::string_view answer) {
  constexpr std::string_view kOpening = R"([{"error": ")";
  constexpr std::string_view kClosing = R"("}])";
  if (!answer.starts_with(kOpening) || !answer.ends_with(kClosing)) {
    return file + ": the answer is neither records nor an error";
  }
  answer.remove_prefix(kOpening.size());
  answer.remove_suffix(kClosing.size());
  return std::string(answer);
}

int printAnswers(const CommandLine& commandLine, const PluginModule& plugin, Output& output) {
  int status = kAllGood;
  for (const std::string& file : commandLine.files) {
    const char* const answer = plugin.parse(file, commandLine.defines);
    if (answer != nullptr) output.write(answer);
    output.checkDiagnostics();
    if (answer == nullptr) {
      complain(file + ": no memory for the answer");
      status = kFileFailed;
    } else if (!std::string_view(answer).starts_with(kRecordsOpening)) {
      complain(errorMessage(file, answer));
      status = kFileFailed;
    }
  }
  return status;
}

void printVersions(const PluginModule& plugin, Output& output) {
  const char* const info = plugin.info();
  if (info == nullptr) throw Failure("no memory for the plug-in's version");
  output.write("quorl-js " QUORL_VERSION "\n" + std::string(info));
}

int usePlugin(const CommandLine& commandLine, Output& output) {
  const PluginModule plugin(commandLine.plugin ? *commandLine.plugin : findPlugin());
  if (!commandLine.version) return printAnswers(commandLine, plugin, output);
  printVersions(plugin, output);
  return kAllGood;
}

int run(const CommandLine& commandLine) {
  Output output(commandLine.diagnostics);
  int status = kAllGood;
  if (commandLine.help) {
    output.write(kHelp);
  } else {
    status = usePlugin(commandLine, output);
  }
  output.checkDiagnostics();
  output.close();
  return status;
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // a reader that has gone is noticed where the answer is written
  try {
    return host::run(host::readCommandLine(argc, argv));
  } catch (const std::exception& failure) {
    host::complain(failure.what());
    return host::kRunFailed;
  }
}
