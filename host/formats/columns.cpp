// The outline for programs: a line per file, with a list for each property of its items. Readers in
// scripting languages parse lists several times as fast as an object for each item.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/file_members.h"
#include "formats/formatters.h"
#include "formats/json_text.h"
#include "formats/ndjson_lines.h"
#include "outline/item.h"
#include "outline/outline.h"
#include "records/kept_records.h"

namespace host {
namespace {

using outline::Item;

constexpr std::string_view kNull = "null";

// Appends the columns of the items with these numbers.
class Columns {
 public:
  Columns(std::string& out, const std::vector<Item>& items, const std::vector<std::size_t>& numbers,
          const KeptRecords& records)
      : out_(out), items_(items), numbers_(numbers), records_(records) {}

  void append() {
    out_ += "\"item\":";
    appendList([this](std::size_t number) { appendNumber(out_, number); });
    appendNumbers("container", [](const Item& item) { return item.parent; });
    appendNumbers("line", [](const Item& item) { return item.firstLine; });
    appendNumbers("endLine", [](const Item& item) { return item.lastLine; });
    begin("kind");
    appendList([this](std::size_t number) {
      out_.append("\"").append(outline::kindWord(items_[number].kind)).append("\"");
    });
    appendTexts(
        "name", [](const Item&) { return true; },
        [](const Item& item) { return std::string_view(item.name); });
    appendNumbers("nodeID", [this](const Item& item) {
      return records_.holds(item.record) ? item.record : -1;
    });
    const auto hasRecord = [this](const Item& item) { return records_.holds(item.record); };
    appendTexts("branchTypeAsString", hasRecord, [this](const Item& item) {
      return std::string_view(records_.labels()[records_.label(item.record)]);
    });
    appendTexts("contents", hasRecord,
                [this](const Item& item) { return records_.text(item.record); });
  }

 private:
  void begin(std::string_view key) { out_.append(",\"").append(key).append("\":"); }

  template <typename AppendOne>
  void appendList(AppendOne appendOne) {
    char before = '[';
    for (const std::size_t number : numbers_) {
      out_ += before;
      before = ',';
      appendOne(number);
    }
    if (numbers_.empty()) out_ += before;
    out_ += ']';
  }

  // A negative number is none.
  template <typename Get>
  void appendNumbers(std::string_view key, Get get) {
    begin(key);
    appendList([&](std::size_t number) {
      const std::int32_t value = get(items_[number]);
      if (value < 0) {
        out_ += kNull;
      } else {
        appendNumber(out_, value);
      }
    });
  }

  // Behind the list come the exact bytes of texts that are not UTF-8, by position in the list.
  template <typename IsThere, typename Get>
  void appendTexts(std::string_view key, IsThere isThere, Get get) {
    begin(key);
    std::string exact;
    std::size_t position = 0;
    appendList([&](std::size_t number) {
      const Item& item = items_[number];
      if (!isThere(item)) {
        out_ += kNull;
      } else if (!appendJsonText(out_, get(item))) {
        exact += exact.empty() ? "\"" : ",\"";
        appendNumber(exact, position);
        exact += "\":\"";
        appendBase64(exact, get(item));
        exact += '"';
      }
      ++position;
    });
    if (exact.empty()) return;
    begin(std::string(key) + "Bytes");
    out_.append("{").append(exact).append("}");
  }

  std::string& out_;
  const std::vector<Item>& items_;
  const std::vector<std::size_t>& numbers_;
  const KeptRecords& records_;
};

}  // namespace

std::string writeColumnsFile(const FileReport& report, const FormatSettings& settings,
                             std::string& out) {
  KeptRecords records;
  std::vector<Item> items;
  std::string fault;
  if (report.status == FileStatus::kAnswered) {
    items = outline::makeOutline(
        report.source, report.answer,
        {.fault = &fault, .onRecord = [&records](const Record& record) { records.take(record); }});
  }
  std::vector<std::size_t> numbers;
  numbers.reserve(items.size());
  for (std::size_t number = 0; number < items.size(); ++number) {
    if (!settings.onlyKinds || outline::holds(*settings.onlyKinds, items[number].kind)) {
      numbers.push_back(number);
    }
  }
  out += kFileLineStart;
  appendNumber(out, report.index);
  out += ",";
  appendFileMembers(out, report, outcomeOf(report, fault));
  out += ",\"items\":{";
  Columns(out, items, numbers, records).append();
  out += "}}\n";
  return fault;
}

}  // namespace host
