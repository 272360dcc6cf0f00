#include "lsp/symbols.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace host::lsp {
namespace {

using outline::Kind;

constexpr std::int32_t kMaxDepth = 200;

enum class Shown : std::uint8_t {
  kAlways,
  kNever,
  kWithImports,
  kAroundOthers,  // only if it contains a symbol
};

struct KindRow {
  Kind kind;
  std::uint8_t symbolKind;  // of the protocol
  Shown shown;
  bool isSearched;
};

constexpr std::array kKinds = {KindRow{Kind::kFunction, 12, Shown::kAlways, true},
                               KindRow{Kind::kMethod, 6, Shown::kAlways, true},
                               KindRow{Kind::kConstructor, 9, Shown::kAlways, true},
                               KindRow{Kind::kGetter, 6, Shown::kAlways, true},
                               KindRow{Kind::kSetter, 6, Shown::kAlways, true},
                               KindRow{Kind::kClass, 5, Shown::kAlways, true},
                               KindRow{Kind::kInterface, 11, Shown::kAlways, true},
                               KindRow{Kind::kEnum, 10, Shown::kAlways, true},
                               KindRow{Kind::kNamespace, 3, Shown::kAlways, true},
                               KindRow{Kind::kType, 11, Shown::kAlways, true},
                               KindRow{Kind::kVariable, 13, Shown::kAlways, true},
                               KindRow{Kind::kField, 8, Shown::kAlways, true},
                               KindRow{Kind::kModule, 2, Shown::kWithImports, false},
                               KindRow{Kind::kCallback, 12, Shown::kAroundOthers, false},
                               KindRow{Kind::kLogic, 0, Shown::kNever, false},
                               KindRow{Kind::kLoop, 0, Shown::kNever, false},
                               KindRow{Kind::kStatement, 0, Shown::kNever, false},
                               KindRow{Kind::kElement, 8, Shown::kAlways, false},
                               KindRow{Kind::kLink, 17, Shown::kAlways, false},
                               KindRow{Kind::kScript, 0, Shown::kNever, false},
                               KindRow{Kind::kBlock, 19, Shown::kAlways, true}};
static_assert(std::ranges::all_of(kKinds,
                                  [](const KindRow& row) {
                                    return &row == &kKinds[static_cast<std::size_t>(row.kind)];
                                  }),
              "a row a kind, in their order");

const KindRow& rowOf(Kind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

// Whether each entry is a symbol. From the last up, so that what is inside is known already.
std::vector<bool> findSymbols(const FileOutline& outline, bool withImports) {
  std::vector<bool> areSymbols(outline.entries.size());
  std::vector<bool> holdSymbols(outline.entries.size());
  for (std::size_t i = outline.entries.size(); i-- > 0;) {
    const OutlineEntry& entry = outline.entries[i];
    const Shown shown = rowOf(entry.kind).shown;
    const bool isShown = shown == Shown::kAlways || (shown == Shown::kWithImports && withImports) ||
                         (shown == Shown::kAroundOthers && holdSymbols[i]);
    areSymbols[i] = isShown && entry.nameBytes > 0;
    if (entry.parent >= 0 && (areSymbols[i] || holdSymbols[i])) {
      holdSymbols[static_cast<std::size_t>(entry.parent)] = true;
    }
  }
  return areSymbols;
}

// The four numbers of a range between what is the same in all.
class RangeText {
 public:
  explicit RangeText(const Range& range) {
    append("{\"start\":");
    append(range.start);
    append(",\"end\":");
    append(range.end);
    append("}");
  }

  std::string_view text() const { return {bytes_.data(), size_}; }

 private:
  static constexpr std::size_t kMostBytes = 128;  // 61 and four numbers of at most ten digits

  void append(std::string_view text) {
    text.copy(bytes_.data() + size_, text.size());
    size_ += text.size();
  }

  void append(std::uint32_t number) {
    char* const begin = bytes_.data();
    size_ = static_cast<std::size_t>(std::to_chars(begin + size_, begin + kMostBytes, number).ptr -
                                     begin);
  }

  void append(Position position) {
    append("{\"line\":");
    append(position.line);
    append(",\"character\":");
    append(position.character);
    append("}");
  }

  std::array<char, kMostBytes> bytes_;
  std::size_t size_ = 0;
};

void writeTree(JsonWriter& out, const FileOutline& outline, const std::vector<SymbolRow>& rows,
               SymbolKinds known) {
  out.StartArray();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const OutlineEntry& entry = outline.entries[rows[i].entry];
    out.StartObject();
    writeMember(out, "name", outline.name(entry));
    writeMember(out, "kind", kindFor(rows[i].kind, known));
    writeKey(out, "range");
    writeRange(out, entry.range);
    writeKey(out, "selectionRange");
    writeRange(out, entry.selection);
    const std::int32_t next = i + 1 < rows.size() ? rows[i + 1].depth : 0;
    if (next > rows[i].depth) {
      writeKey(out, "children");
      out.StartArray();
      continue;
    }
    out.EndObject();
    for (std::int32_t depth = rows[i].depth; depth > next; --depth) {
      out.EndArray();
      out.EndObject();
    }
  }
  out.EndArray();
}

void writeList(JsonWriter& out, const FileOutline& outline, const std::vector<SymbolRow>& rows,
               std::string_view uri, SymbolKinds known) {
  out.StartArray();
  for (const SymbolRow& row : rows) {
    const OutlineEntry& entry = outline.entries[row.entry];
    out.StartObject();
    writeMember(out, "name", outline.name(entry));
    writeMember(out, "kind", kindFor(row.kind, known));
    writeKey(out, "location");
    out.StartObject();
    writeMember(out, "uri", uri);
    writeKey(out, "range");
    writeRange(out, entry.range);
    out.EndObject();
    if (row.parent >= 0) {
      const SymbolRow& parent = rows[static_cast<std::size_t>(row.parent)];
      writeMember(out, "containerName", outline.name(outline.entries[parent.entry]));
    }
    out.EndObject();
  }
  out.EndArray();
}

}  // namespace

std::vector<SymbolRow> symbolRows(const FileOutline& outline, bool withImports) {
  const std::vector<bool> areSymbols = findSymbols(outline, withImports);
  std::vector<SymbolRow> rows;
  std::vector<std::int32_t> innermost(outline.entries.size());  // the row at or above each entry
  for (std::size_t i = 0; i < outline.entries.size(); ++i) {
    const OutlineEntry& entry = outline.entries[i];
    std::int32_t parent = entry.parent < 0 ? -1 : innermost[static_cast<std::size_t>(entry.parent)];
    innermost[i] = parent;
    if (!areSymbols[i]) continue;
    const auto depthBelow = [&rows](std::int32_t row) {
      return row < 0 ? 0 : rows[static_cast<std::size_t>(row)].depth + 1;
    };
    if (depthBelow(parent) == kMaxDepth) parent = rows[static_cast<std::size_t>(parent)].parent;
    innermost[i] = static_cast<std::int32_t>(rows.size());
    rows.push_back({i, rowOf(entry.kind).symbolKind, parent, depthBelow(parent)});
  }
  return rows;
}

bool mayBeSymbol(Kind kind) { return rowOf(kind).shown != Shown::kNever; }

bool isSearched(Kind kind) { return rowOf(kind).isSearched; }

std::uint8_t kindFor(std::uint8_t kind, SymbolKinds known) {
  constexpr std::uint8_t kNamespace = 3;  // the nearest to an object among those that all know
  return (known >> kind & 1U) != 0 ? kind : kNamespace;
}

// Ranges are three quarters of an answer. Written key by key they took most of its time.
void writeRange(JsonWriter& out, const Range& range) {
  out.copyValue(RangeText(range).text(), rapidjson::kObjectType);
}

void writeDocumentSymbols(JsonWriter& out, const FileOutline& outline, std::string_view uri,
                          const ClientFeatures& features) {
  const std::vector<SymbolRow> rows = symbolRows(outline, features.showsImports);
  if (features.takesSymbolTree) {
    writeTree(out, outline, rows, features.documentKinds);
  } else {
    writeList(out, outline, rows, uri, features.documentKinds);
  }
}

}  // namespace host::lsp
