// Which entries of an outline are symbols, and their answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "lsp/client_features.h"
#include "lsp/file_outline.h"
#include "lsp/json.h"

namespace host::lsp {

struct SymbolRow {
  std::size_t entry = 0;     // in FileOutline::entries
  std::uint8_t kind = 0;     // the protocol's SymbolKind
  std::int32_t parent = -1;  // an earlier row
  std::int32_t depth = 0;
};

// The symbols in order, each behind the one that contains it. Only so many levels deep, since
// clients read JSON recursively; what is deeper stands beside its parent.
std::vector<SymbolRow> symbolRows(const FileOutline& outline, bool withImports);

// Whether an entry of that kind is a symbol for any client.
bool mayBeSymbol(outline::Kind kind);

// Whether the search over the workspace finds entries of that kind.
bool isSearched(outline::Kind kind);

// The kind, or one that the client knows.
std::uint8_t kindFor(std::uint8_t kind, SymbolKinds known);

void writeRange(JsonWriter& out, const Range& range);

// The result of textDocument/documentSymbol: a tree, or a flat list for clients that take no tree.
void writeDocumentSymbols(JsonWriter& out, const FileOutline& outline, std::string_view uri,
                          const ClientFeatures& features);

}  // namespace host::lsp
