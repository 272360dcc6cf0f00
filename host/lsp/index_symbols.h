// The symbols of an index that "quorl-js index" keeps, in place of those of the workspace.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "index/index_reader.h"
#include "lsp/file_outline.h"

namespace host::lsp {

class IndexSymbols {
 public:
  // Throws Failure for what is no index.
  explicit IndexSymbols(std::string path);

  struct File {
    std::string path;     // absolute
    FileOutline outline;  // the symbols that are found, and those around them
  };

  // The files with symbols whose names contain the query, whatever the case of ASCII letters, in
  // the order of their paths. Of more symbols than that, those stay that SymbolSearch puts first.
  // An index that has been replaced is opened again; one that cannot be is left for the old one.
  std::vector<File> find(std::string_view query, std::size_t most);

 private:
  struct Symbol;

  void open();
  void openIfReplaced();
  std::vector<Symbol> matches(std::string_view query, std::size_t most);
  std::int64_t symbolAround(std::int64_t id);
  FileOutline outlineOf(const std::vector<std::int64_t>& ids);

  std::string path_;
  std::unique_ptr<index::IndexReader> reader_;
  std::string folder_;
  struct stat opened_ {};
};

}  // namespace host::lsp
