#include "run/command_help.h"

#include "cli/help_text.h"
#include "run/exit_status.h"
#include "run/output.h"

namespace host {

int printHelp(const Command& command) {
  Output output;
  output.write(helpText(command));
  output.close();
  return kSuccess;
}

}  // namespace host
