#include "system/messages.h"

#include <unistd.h>

#include "system/display_text.h"
#include "system/io.h"

namespace host {

void printMessage(std::string_view message) {
  // One call, so that the line stays whole beside those of other processes.
  writeAll(STDERR_FILENO, "quorl-js: " + onOneLine(message) + "\n");
}

}  // namespace host
