// The module's version, as a worker gets it.
#pragma once

#include <string>

#include "workers/worker.h"

namespace host {

struct Version {
  std::string text;
  bool diagnosticsLost;
};

// Has a worker ask the module for its version. Throws Failure if there is none.
Version askVersion(const WorkerTask& task);

}  // namespace host
