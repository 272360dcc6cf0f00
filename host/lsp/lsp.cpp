#include "lsp/lsp.h"

#include <string>

#include "cli/argument_parser.h"
#include "cli/option_table.h"
#include "cli/value_parsers.h"
#include "lsp/server.h"
#include "run/command_help.h"
#include "system/memory_budget.h"
#include "workers/plugin_module.h"

namespace host {
namespace {

constexpr std::chrono::seconds kTimeout{10};

lsp::ServerOptions readOptions(const ArgumentParser& arguments) {
  if (!arguments.operands().empty()) {
    throw arguments.failure("unexpected argument " + arguments.operands().front());
  }
  lsp::ServerOptions options;
  options.limits.time = kTimeout;
  options.limits.memory = memoryBudget();
  if (const auto value = arguments.valueOf("--timeout")) {
    const auto time = parseSeconds(*value);
    if (!time) throw arguments.invalidValue("--timeout", *value);
    options.limits.time = *time;
  }
  if (const auto value = arguments.valueOf("--max-size")) {
    const auto size = parseSize(*value);
    if (!size) throw arguments.invalidValue("--max-size", *value);
    options.limits.sourceBytes = *size;
  }
  options.indexFile = arguments.valueOf("--index");
  options.traceFile = arguments.valueOf("--trace");
  options.plugin = pluginPath(arguments.valueOf("--plugin"));
  return options;
}

}  // namespace

int runLsp(int argc, const char* const* argv) {
  const ArgumentParser arguments(kLsp, argc, argv);
  if (arguments.isHelpWanted()) return printHelp(kLsp);
  return lsp::Server(readOptions(arguments)).run();
}

}  // namespace host
