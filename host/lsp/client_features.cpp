#include "lsp/client_features.h"

#include <string_view>

namespace host::lsp {
namespace {

// File to Array, which every client knows.
constexpr std::uint32_t kOldKinds = 18;
constexpr std::uint32_t kMaxKind = 31;

SymbolKinds readKinds(const Json* kinds) {
  if (kinds == nullptr) return (SymbolKinds{1} << (kOldKinds + 1)) - 1;
  SymbolKinds result = 0;
  for (const Json& kind : kinds->GetArray()) {
    if (kind.IsUint() && kind.GetUint() <= kMaxKind) result |= SymbolKinds{1} << kind.GetUint();
  }
  return result;
}

bool offersUtf8(const Json& capabilities) {
  const Json* const encodings = findArray(capabilities, {"general", "positionEncodings"});
  if (encodings == nullptr) return false;
  for (const Json& encoding : encodings->GetArray()) {
    if (encoding.IsString() && encoding.GetString() == std::string_view("utf-8")) return true;
  }
  return false;
}

}  // namespace

ClientFeatures readFeatures(const Json& parameters) {
  ClientFeatures features;
  features.showsImports = isTrue(parameters, {"initializationOptions", "imports"});
  const Json* const capabilities = find(parameters, {"capabilities"});
  if (capabilities == nullptr) return features;
  if (offersUtf8(*capabilities)) features.encoding = Encoding::kUtf8;
  constexpr const char* kDocument = "textDocument";
  features.takesSymbolTree =
      isTrue(*capabilities, {kDocument, "documentSymbol", "hierarchicalDocumentSymbolSupport"});
  features.documentKinds =
      readKinds(findArray(*capabilities, {kDocument, "documentSymbol", "symbolKind", "valueSet"}));
  features.workspaceKinds =
      readKinds(findArray(*capabilities, {"workspace", "symbol", "symbolKind", "valueSet"}));
  features.foldsLinesOnly = isTrue(*capabilities, {kDocument, "foldingRange", "lineFoldingOnly"});
  if (const auto limit = findNumber(*capabilities, {kDocument, "foldingRange", "rangeLimit"})) {
    features.maxFolds = *limit;
  }
  features.showsProgress = isTrue(*capabilities, {"window", "workDoneProgress"});
  features.watchesFiles =
      isTrue(*capabilities, {"workspace", "didChangeWatchedFiles", "dynamicRegistration"});
  return features;
}

}  // namespace host::lsp
