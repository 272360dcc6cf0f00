// Scripts, of any name that makes one.
#include "harness.h"
#include "route_run.h"
#include "targets.h"
#include "text/file_names.h"

namespace fuzz {

void testScript(std::string_view input) {
  const RouteRun run = runRoute(input, kScriptNames);
  if (run.answer.empty()) return;
  require(text::isScriptPath(run.path), "the name is a script's");
  require(run.built.out.starts_with("nodeid was 0 and now is 0\n"), "only records are reported");
  require(run.built.err.empty(), "a script has no warnings");
}

}  // namespace fuzz
