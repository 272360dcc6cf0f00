#include "outline/outline.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "outline/cleaned_text.h"
#include "outline/page_items.h"
#include "outline/placed_items.h"
#include "outline/record_tags.h"
#include "outline/script_source.h"
#include "outline/source_lines.h"
#include "records/record_reader.h"

namespace host::outline {
namespace {

std::vector<PlacedItem> outlineScript(ScriptSource& script, RecordReader& records,
                                      const OutlineExtras& extras) {
  SourceLines& lines = script.lines;
  std::vector<PlacedItem> items;
  items.reserve(static_cast<std::size_t>(lines.count()));
  std::optional<PlacedItem> unwanted;
  while (const Record* const record = records.next()) {
    if (extras.onRecord) extras.onRecord(*record);
    if (record->lineNumber <= 0 || wrapsFile(*record)) continue;
    const std::int32_t line =
        script.map.sourceLine(static_cast<std::size_t>(record->lineNumber) - 1);
    PlacedItem placed = script.items.itemOf(*record, std::min(line, lines.count()), lines);
    // It may contain others of its line.
    if (unwanted && unwanted->item.firstLine == line) items.push_back(std::move(*unwanted));
    unwanted.reset();
    if (extras.isUnwanted != nullptr && extras.isUnwanted(placed.item)) {
      unwanted = std::move(placed);
    } else {
      items.push_back(std::move(placed));
    }
  }
  script.items.addOthers(lines, items);
  if (extras.comments != nullptr) *extras.comments = script.items.comments();
  return items;
}

struct LabelKind {
  std::string_view label;
  Kind kind;
};
constexpr std::array kLabelKinds = {
    LabelKind{"function", Kind::kFunction}, LabelKind{"class", Kind::kClass},
    LabelKind{"classvar", Kind::kVariable}, LabelKind{"container", Kind::kBlock},
    LabelKind{"define", Kind::kBlock},      LabelKind{"logic", Kind::kLogic},
    LabelKind{"loop", Kind::kLoop}};

Kind kindOf(std::string_view label) {
  const auto* const row =
      std::find_if(kLabelKinds.begin(), kLabelKinds.end(),
                   [label](const LabelKind& known) { return known.label == label; });
  return row == kLabelKinds.end() ? Kind::kStatement : row->kind;
}

std::vector<PlacedItem> outlineOther(std::string_view source, RecordReader& records,
                                     const RecordAction& onRecord) {
  const LineMap map = cleanedLines(source);
  const std::int32_t lineCount = SourceLines(source).count();
  struct Span {
    std::int32_t first;
    std::int32_t last;
    std::int32_t parent;
  };
  std::vector<Span> spans;  // by nodeID
  std::vector<PlacedItem> all;
  while (const Record* const record = records.next()) {
    if (onRecord) onRecord(*record);
    const std::int32_t line =
        record->lineNumber <= 0
            ? 0
            : std::min(lineCount, map.sourceLine(static_cast<std::size_t>(record->lineNumber) - 1));
    spans.push_back({line, line, record->parentId});
    PlacedItem placed;
    placed.item.kind = kindOf(record->label);
    placed.item.record = wrapsFile(*record) ? -1 : record->nodeId;
    placed.item.name = record->simpleFunctionName;
    if (placed.item.name.empty() && placed.item.kind == Kind::kBlock) {
      placed.item.name = record->contents;
    }
    all.push_back(std::move(placed));
  }
  // Children stand behind their parents.
  for (std::size_t i = spans.size(); i-- > 0;) {
    const Span& child = spans[i];
    if (child.parent < 0 || child.first == 0 || static_cast<std::size_t>(child.parent) >= i)
      continue;
    Span& parent = spans[static_cast<std::size_t>(child.parent)];
    if (all[static_cast<std::size_t>(child.parent)].item.record < 0) continue;
    const bool hasLine = parent.first > 0 && parent.first <= child.first;
    parent.first = hasLine ? parent.first : child.first;
    parent.last = std::max(parent.last, child.last);
  }
  std::vector<PlacedItem> items;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (all[i].item.record < 0 || spans[i].first == 0) continue;
    all[i].item.firstLine = spans[i].first;
    all[i].item.lastLine = std::max(spans[i].first, spans[i].last);
    items.push_back(std::move(all[i]));
  }
  return items;
}

}  // namespace

std::vector<Item> makeOutline(std::string_view source, std::string_view answer,
                              const OutlineExtras& extras) {
  // Positions in scripts are of 32 bits.
  source = source.substr(0, std::numeric_limits<std::uint32_t>::max());
  std::string path;
  const Route route = routeOf(answer, path);
  if (extras.comments != nullptr && route != Route::kScript) {
    *extras.comments = findComments(source);
  }
  // The items of a script take no texts from its records.
  const bool needsTexts = route != Route::kScript || extras.onRecord;
  RecordReader records(answer, needsTexts ? RecordTexts::kPlain : RecordTexts::kEscaped);
  std::vector<PlacedItem> items;
  switch (route) {
    case Route::kScript: {
      std::optional<ScriptSource> own;
      ScriptSource& script = extras.script != nullptr ? *extras.script : own.emplace(source, path);
      items = outlineScript(script, records, extras);
      break;
    }
    case Route::kPage:
      items = outlinePage(source, records, extras.onRecord);
      break;
    case Route::kOther:
      items = outlineOther(source, records, extras.onRecord);
      break;
  }
  if (extras.fault != nullptr) *extras.fault = records.fault();
  return nest(std::move(items));
}

}  // namespace host::outline
