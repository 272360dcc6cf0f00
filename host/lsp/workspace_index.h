// The symbols of the files below the workspace folders.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "lsp/client_features.h"
#include "lsp/file_outline.h"
#include "lsp/json.h"

namespace host::lsp {

// The symbols of a file, packed: there may be millions in a workspace.
class FileSymbols {
 public:
  struct Symbol {
    std::uint32_t nameOffset;
    std::uint16_t nameBytes;
    std::uint8_t kind;
    std::int32_t container;  // another one of the file, or -1
    Position start;          // of the name, on one line
    std::uint32_t endCharacter;
  };

  FileSymbols() = default;
  explicit FileSymbols(const FileOutline& outline);

  const std::vector<Symbol>& all() const { return symbols_; }
  std::string_view name(const Symbol& symbol) const {
    return std::string_view(names_).substr(symbol.nameOffset, symbol.nameBytes);
  }

 private:
  std::vector<Symbol> symbols_;
  std::string names_;
};

// The result of workspace/symbol. Names that equal the query come first, then those that begin with
// it, then those that contain it, whatever the case of ASCII letters; the limit comes last.
class SymbolSearch {
 public:
  static constexpr std::size_t kMaxResults = 1000;

  explicit SymbolSearch(std::string_view query);

  // The file and its URI have to outlive the search.
  void add(const std::string& uri, const FileSymbols& file);

  void write(JsonWriter& out, SymbolKinds known) const;

 private:
  struct Match {
    const std::string* uri;
    const FileSymbols* file;
    const FileSymbols::Symbol* symbol;
  };

  std::string query_;  // in lower case
  std::array<std::vector<Match>, 3> tiers_;
};

// Files by their paths.
class WorkspaceIndex {
 public:
  void set(const std::string& path, const FileOutline& outline);
  void erase(const std::string& path) { files_.erase(path); }
  bool holds(const std::string& path) const { return files_.count(path) != 0; }
  std::size_t size() const { return files_.size(); }

  // The paths of the files below the folder.
  std::vector<std::string> pathsBelow(const std::string& folder) const;

  struct File {
    std::string uri;
    FileSymbols symbols;
  };
  const std::map<std::string, File>& files() const { return files_; }

 private:
  std::map<std::string, File> files_;
};

// Whether the path is that of the folder or of something below it.
bool isBelow(std::string_view path, std::string_view folder);

}  // namespace host::lsp
