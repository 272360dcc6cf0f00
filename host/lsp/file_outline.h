// An outline as editors need it: positions instead of lines, and only what they show or fold.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "lsp/positions.h"
#include "outline/item.h"
#include "outline/outline.h"
#include "outline/source_lines.h"

namespace host::lsp {

struct OutlineEntry {
  outline::Kind kind = outline::Kind::kStatement;
  bool endsInCloser = false;     // its last line begins with a bracket or a tag that closes it
  std::int32_t parent = -1;      // index of the innermost entry that contains it, before its own
  std::uint32_t nameOffset = 0;  // in FileOutline::names
  std::uint32_t nameBytes = 0;
  Range range;      // from the first text of its first line to the end of its last line
  Range selection;  // its name, or else the text of its first line; of what is no symbol its range
};

struct FileOutline {
  std::vector<OutlineEntry> entries;            // in the order of their first lines
  std::vector<outline::CommentLines> comments;  // of several lines
  std::vector<outline::CommentLines> imports;   // lines of imports, with blank lines between them
  std::string names;

  std::string_view name(const OutlineEntry& entry) const {
    return std::string_view(names).substr(entry.nameOffset, entry.nameBytes);
  }
};

// Whether the item has no entry: one of a kind without a name that matters, on one line.
bool hasNoEntry(const outline::Item& item);

// The entries of the items: those that have a name or may be folded. Names are on one line, and cut
// short if they are long; a symbol that has none is called by the text of its line.
FileOutline placeItems(const outline::SourceLines& lines, const std::vector<outline::Item>& items,
                       std::vector<outline::CommentLines> comments, Encoding encoding);

// The outline as bytes for another process of this program, and back. readOutline checks all that
// the server relies on, since a broken module may have written over them; false if it finds a
// fault.
std::string outlineBytes(const FileOutline& outline);
bool readOutline(std::string_view bytes, FileOutline& outline);

}  // namespace host::lsp
