#include "lsp/workspace_index.h"

#include <algorithm>
#include <limits>

#include "lsp/symbols.h"
#include "lsp/uri.h"

namespace host::lsp {
namespace {

char lower(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte; }

// The query, in lower case, in the name.
std::size_t findIn(std::string_view name, std::string_view query) {
  const auto* const found =
      std::search(name.begin(), name.end(), query.begin(), query.end(),
                  [](char byte, char sought) { return lower(byte) == sought; });
  return found == name.end() && !query.empty() ? std::string_view::npos
                                               : static_cast<std::size_t>(found - name.begin());
}

}  // namespace

FileSymbols::FileSymbols(const FileOutline& outline) {
  const std::vector<SymbolRow> rows = symbolRows(outline, false);
  std::vector<std::int32_t> nearest(rows.size());  // the symbol at or above each row
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const OutlineEntry& entry = outline.entries[rows[i].entry];
    const std::int32_t container =
        rows[i].parent < 0 ? -1 : nearest[static_cast<std::size_t>(rows[i].parent)];
    nearest[i] = container;
    if (!isSearched(entry.kind)) continue;
    nearest[i] = static_cast<std::int32_t>(symbols_.size());
    const std::string_view name =
        outline.name(entry).substr(0, std::numeric_limits<std::uint16_t>::max());
    symbols_.push_back({static_cast<std::uint32_t>(names_.size()),
                        static_cast<std::uint16_t>(name.size()), rows[i].kind, container,
                        entry.selection.start, entry.selection.end.character});
    names_ += name;
  }
  symbols_.shrink_to_fit();
  names_.shrink_to_fit();
}

SymbolSearch::SymbolSearch(std::string_view query) : query_(query) {
  std::transform(query_.begin(), query_.end(), query_.begin(), lower);
}

void SymbolSearch::add(const std::string& uri, const FileSymbols& file) {
  for (const FileSymbols::Symbol& symbol : file.all()) {
    const std::string_view name = file.name(symbol);
    const std::size_t at = findIn(name, query_);
    if (at == std::string_view::npos) continue;
    const std::size_t tier = at > 0 ? 2 : name.size() > query_.size() ? 1 : 0;
    if (tiers_[tier].size() < kMaxResults) tiers_[tier].push_back({&uri, &file, &symbol});
  }
}

void SymbolSearch::write(JsonWriter& out, SymbolKinds known) const {
  std::size_t left = kMaxResults;
  out.StartArray();
  for (const std::vector<Match>& tier : tiers_) {
    for (const Match& match : tier) {
      if (left-- == 0) {
        out.EndArray();
        return;
      }
      const FileSymbols::Symbol& symbol = *match.symbol;
      out.StartObject();
      writeMember(out, "name", match.file->name(symbol));
      writeMember(out, "kind", kindFor(symbol.kind, known));
      writeKey(out, "location");
      out.StartObject();
      writeMember(out, "uri", *match.uri);
      writeKey(out, "range");
      writeRange(out, {symbol.start, {symbol.start.line, symbol.endCharacter}});
      out.EndObject();
      if (symbol.container >= 0) {
        const auto container = static_cast<std::size_t>(symbol.container);
        writeMember(out, "containerName", match.file->name(match.file->all()[container]));
      }
      out.EndObject();
    }
  }
  out.EndArray();
}

void WorkspaceIndex::set(const std::string& path, const FileOutline& outline) {
  files_[path] = {uriOfPath(path), FileSymbols(outline)};
}

std::vector<std::string> WorkspaceIndex::pathsBelow(const std::string& folder) const {
  std::vector<std::string> paths;
  for (const auto& [path, file] : files_) {
    if (isBelow(path, folder)) paths.push_back(path);
  }
  return paths;
}

bool isBelow(std::string_view path, std::string_view folder) {
  while (folder.size() > 1 && folder.ends_with('/')) folder.remove_suffix(1);
  if (!path.starts_with(folder)) return false;
  return path.size() == folder.size() || folder == "/" || path[folder.size()] == '/';
}

}  // namespace host::lsp
