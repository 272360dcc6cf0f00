#include "outline_rules.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>

#include "records/record_reader.h"

namespace {

using host::outline::Item;
using host::outline::Kind;

std::int32_t lineCount(std::string_view source) {
  std::int32_t count = 1;
  for (std::size_t at = 0; at < source.size(); ++at) {
    const bool isPair = source[at] == '\r' && source.substr(at + 1).starts_with('\n');
    count += source[at] == '\n' || (source[at] == '\r' && !isPair);
  }
  return count;
}

bool isWrapper(const host::Record& record) {
  const std::set<std::string_view> wrapping = {"html-document", "html-structure", "javascript-file",
                                               "main-script", "auto-generated"};
  return record.label == "filepath" || record.label == "preprocessor" ||
         std::any_of(record.tags.begin(), record.tags.end(),
                     [&wrapping](std::string_view tag) { return wrapping.contains(tag); });
}

// The records that have to have an item. In other text a record without a line needs one below it.
std::vector<std::int32_t> placedRecords(std::string_view answer) {
  struct Node {
    std::int32_t parent;
    bool isPlaced;
    bool isWrapper;
  };
  std::vector<Node> nodes;
  bool isPage = false;
  bool isScript = false;
  host::RecordReader reader(answer);
  while (const host::Record* const record = reader.next()) {
    for (const std::string_view tag : record->tags) {
      isPage = isPage || tag == "html-document";
      isScript = isScript || tag == "javascript-file";
    }
    const bool wraps = isWrapper(*record);
    nodes.push_back({record->parentId, !wraps && (isPage || record->lineNumber > 0), wraps});
  }
  if (!isPage && !isScript) {
    for (std::size_t i = nodes.size(); i-- > 0;) {
      if (!nodes[i].isPlaced || nodes[i].parent < 0) continue;
      Node& parent = nodes[static_cast<std::size_t>(nodes[i].parent)];
      parent.isPlaced = parent.isPlaced || !parent.isWrapper;
    }
  }
  std::vector<std::int32_t> placed;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (nodes[i].isPlaced) placed.push_back(static_cast<std::int32_t>(i));
  }
  return placed;
}

}  // namespace

std::string brokenRule(const std::vector<Item>& items, std::string_view source,
                       std::string_view answer) {
  const std::int32_t lines = lineCount(source);
  std::vector<std::int32_t> records;
  std::set<std::int32_t> linesWithoutRecord;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const Item& item = items[i];
    const std::string at = " (item " + std::to_string(i) + ")";
    if (item.firstLine < 1 || item.lastLine > lines) return "lines lie in the source" + at;
    if (item.lastLine < item.firstLine) return "lines do not run backwards" + at;
    if (i > 0 && item.firstLine < items[i - 1].firstLine) return "items are in order" + at;
    if (item.parent >= static_cast<std::int32_t>(i) || item.parent < -1)
      return "parents first" + at;
    if (item.parent < 0) {
      if (item.depth != 0) return "an item without a parent has depth 0" + at;
    } else {
      const Item& parent = items[static_cast<std::size_t>(item.parent)];
      if (item.depth != parent.depth + 1) return "an item is a level below its parent" + at;
      if (item.firstLine < parent.firstLine || item.lastLine > parent.lastLine) {
        return "an item lies in its parent" + at;
      }
    }
    if (item.record >= 0) {
      records.push_back(item.record);
    } else if (item.name.empty() || !linesWithoutRecord.insert(item.firstLine).second) {
      return "an item without a record is the named one of its line" + at;
    }
  }
  std::sort(records.begin(), records.end());
  if (records != placedRecords(answer)) return "each record with a place has exactly one item";
  return {};
}
