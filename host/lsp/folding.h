// The answers to textDocument/foldingRange and textDocument/selectionRange.
#pragma once

#include <string_view>
#include <vector>

#include "lsp/client_features.h"
#include "lsp/file_outline.h"
#include "lsp/json.h"

namespace host::lsp {

struct Fold {
  std::uint32_t startLine = 0;
  std::uint32_t endLine = 0;
  std::string_view kind = {};  // "comment", "imports" or nothing
  bool operator==(const Fold&) const = default;
};

// Folds by their first lines, one a line. A line that closes what is folded stays visible. Of more
// than the limit the outermost are kept.
std::vector<Fold> findFolds(const FileOutline& outline, std::size_t limit);

void writeFolds(JsonWriter& out, const FileOutline& outline, std::string_view text,
                const ClientFeatures& features);

// The ranges around the position from the innermost out: the word, its line, the entries that
// contain it, the text. Each lies inside the next.
std::vector<Range> rangesAround(const FileOutline& outline, std::string_view text,
                                Position position, Encoding encoding);

void writeSelections(JsonWriter& out, const FileOutline& outline, std::string_view text,
                     const std::vector<Position>& positions, Encoding encoding);

}  // namespace host::lsp
