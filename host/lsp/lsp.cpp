#include "lsp/lsp.h"

#include <string>

#include "cli/argument_parser.h"
#include "cli/help_text.h"
#include "cli/option_table.h"
#include "cli/value_parsers.h"
#include "lsp/server.h"
#include "run/exit_status.h"
#include "run/output.h"
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
  const auto plugin = arguments.valueOf("--plugin");
  options.plugin = plugin ? *plugin : findPlugin();
  return options;
}

}  // namespace

int runLsp(int argc, const char* const* argv) {
  const ArgumentParser arguments(kLsp, argc, argv);
  if (arguments.isHelpWanted()) {
    Output output;
    output.write(helpText(kLsp));
    output.close();
    return kSuccess;
  }
  return lsp::Server(readOptions(arguments)).run();
}

}  // namespace host
