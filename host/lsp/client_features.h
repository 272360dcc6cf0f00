// What the client said it can take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "lsp/json.h"
#include "lsp/positions.h"

namespace host::lsp {

// The kinds of symbols that a client takes, a bit each.
using SymbolKinds = std::uint32_t;

struct ClientFeatures {
  Encoding encoding = Encoding::kUtf16;
  bool takesSymbolTree = false;  // else symbols come as a flat list
  SymbolKinds documentKinds = 0;
  SymbolKinds workspaceKinds = 0;
  bool foldsLinesOnly = false;
  std::size_t maxFolds = std::numeric_limits<std::size_t>::max();
  bool showsProgress = false;
  bool watchesFiles = false;  // if it is asked to
  bool showsImports = false;  // of initializationOptions: import and export lists are symbols too
};

// Reads the parameters of the initialize request.
ClientFeatures readFeatures(const Json& parameters);

}  // namespace host::lsp
