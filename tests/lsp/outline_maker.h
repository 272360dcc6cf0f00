// Outlines of the server, written as tables.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lsp/file_outline.h"

namespace lsp_test {

struct Row {
  host::outline::Kind kind;
  std::string name;
  std::int32_t firstLine;  // from 1
  std::int32_t lastLine;
  std::int32_t parent = -1;  // among the rows
};

inline host::lsp::FileOutline outlineOf(std::string_view source, const std::vector<Row>& rows,
                                        host::lsp::Encoding encoding = host::lsp::Encoding::kUtf16,
                                        std::vector<host::outline::CommentLines> comments = {}) {
  std::vector<host::outline::Item> items;
  for (const Row& row : rows) {
    host::outline::Item item;
    item.kind = row.kind;
    item.name = row.name;
    item.firstLine = row.firstLine;
    item.lastLine = row.lastLine;
    item.parent = row.parent;
    items.push_back(item);
  }
  return host::lsp::placeItems(host::outline::SourceLines(source), items, std::move(comments),
                               encoding);
}

// "1:2-3:4".
inline std::string textOf(const host::lsp::Range& range) {
  const auto place = [](host::lsp::Position position) {
    return std::to_string(position.line) + ":" + std::to_string(position.character);
  };
  return place(range.start) + "-" + place(range.end);
}

}  // namespace lsp_test
