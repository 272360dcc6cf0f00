// Each shard is read twice: first to learn that it is whole, and where its files are.
#include "indexing/ndjson_source.h"

#include <rapidjson/document.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "formats/json_text.h"
#include "formats/ndjson_lines.h"
#include "index/database.h"
#include "index/rows.h"
#include "merge/line_reader.h"
#include "merge/shard.h"
#include "outline/item.h"
#include "system/failure.h"

namespace host::indexing {
namespace {

using Json = rapidjson::Document;
using index::FileRow;
using index::IndexWriter;
using index::ItemRow;

// An item with texts of its own.
struct OwnedItem {
  std::int64_t number = -1;  // in the outline
  std::int64_t line = -1;
  std::int64_t lastLine = -1;
  std::optional<std::int64_t> parent;
  std::optional<std::int64_t> record;
  std::optional<std::string> label;
  std::string kind;
  std::string name;
  std::string text;

  ItemRow row(outline::Kind itemKind) const {
    ItemRow row;
    row.kind = itemKind;
    if (label) row.label = *label;
    row.line = line;
    row.lastLine = lastLine;
    row.parent = parent;
    row.record = record;
    if (!name.empty()) row.name = name;
    if (record) row.text = text;
    row.isNamePlain = index::isPlainText(name);
    row.isTextPlain = index::isPlainText(text);
    return row;
  }
};

enum class Member {
  kNone,
  kRecord,
  kLabel,
  kText,
  kTextBytes,
  kLine,
  kLastLine,
  kKind,
  kName,
  kNameBytes,
  kNumber,
  kParent,
  kSource
};

struct MemberName {
  std::string_view key;
  int depth;
  Member member;
};

constexpr int kRecordDepth = 1;
constexpr int kSourceDepth = 2;
constexpr std::array kMembers = {MemberName{"nodeID", kRecordDepth, Member::kRecord},
                                 MemberName{"branchTypeAsString", kRecordDepth, Member::kLabel},
                                 MemberName{"contents", kRecordDepth, Member::kText},
                                 MemberName{"contentsBytes", kRecordDepth, Member::kTextBytes},
                                 MemberName{"source", kRecordDepth, Member::kSource},
                                 MemberName{"line", kSourceDepth, Member::kLine},
                                 MemberName{"endLine", kSourceDepth, Member::kLastLine},
                                 MemberName{"kind", kSourceDepth, Member::kKind},
                                 MemberName{"name", kSourceDepth, Member::kName},
                                 MemberName{"nameBytes", kSourceDepth, Member::kNameBytes},
                                 MemberName{"item", kSourceDepth, Member::kNumber},
                                 MemberName{"container", kSourceDepth, Member::kParent}};

// Called by the JSON reader, which prescribes the functions' names, with a line that is known to be
// sound. Keeps what the index has of a record.
class RecordHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, RecordHandler> {
 public:
  explicit RecordHandler(OwnedItem& item) : item_(item) {}

  bool hasSource() const { return hasSource_; }  // though it may be null
  bool isSound() const { return isSound_; }

  bool StartObject() {
    isInSource_ = depth_ == kRecordDepth && member_ == Member::kSource;
    ++depth_;
    return true;
  }
  bool EndObject(rapidjson::SizeType /*count*/) { return leave(); }
  bool StartArray() {
    ++depth_;
    return true;
  }
  bool EndArray(rapidjson::SizeType /*count*/) { return leave(); }

  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    const std::string_view key(text, length);
    member_ = Member::kNone;
    if (depth_ == kRecordDepth || (depth_ == kSourceDepth && isInSource_)) {
      for (const MemberName& known : kMembers) {
        if (known.depth == depth_ && known.key == key) member_ = known.member;
      }
    }
    if (member_ == Member::kSource) hasSource_ = true;
    return true;
  }

  bool String(const char* bytes, rapidjson::SizeType length, bool /*copy*/) {
    const std::string_view text(bytes, length);
    switch (member_) {
      case Member::kLabel:
        item_.label = text;
        break;
      case Member::kText:
        item_.text = text;
        break;
      case Member::kTextBytes:
        isSound_ = isSound_ && decodeBase64(text, item_.text);
        break;
      case Member::kKind:
        item_.kind = text;
        break;
      case Member::kName:
        item_.name = text;
        break;
      case Member::kNameBytes:
        isSound_ = isSound_ && decodeBase64(text, item_.name);
        break;
      default:
        break;
    }
    return true;
  }

  bool Uint(unsigned number) { return Int64(number); }
  bool Int(int number) { return Int64(number); }
  bool Int64(std::int64_t number) {
    switch (member_) {
      case Member::kRecord:
        item_.record = number;
        break;
      case Member::kLine:
        item_.line = number;
        break;
      case Member::kLastLine:
        item_.lastLine = number;
        break;
      case Member::kNumber:
        item_.number = number;
        break;
      case Member::kParent:
        item_.parent = number;
        break;
      default:
        break;
    }
    return true;
  }

 private:
  bool leave() {
    --depth_;
    member_ = Member::kNone;
    return true;
  }

  OwnedItem& item_;
  Member member_ = Member::kNone;
  int depth_ = 0;
  bool isInSource_ = false;
  bool hasSource_ = false;
  bool isSound_ = true;
};

const std::unordered_map<std::string_view, outline::Kind>& kindsByWord() {
  static const auto kinds = [] {
    std::unordered_map<std::string_view, outline::Kind> result;
    std::size_t number = 0;
    for (const std::string_view word : outline::kindWords()) {
      result.emplace(word, static_cast<outline::Kind>(number++));
    }
    return result;
  }();
  return kinds;
}

// The lines of one file of a shard.
class FileLines {
 public:
  FileLines(LineReader& lines, const ShardFile& file) : lines_(lines) {
    lines_.seek(file.offset, file.bytes);
    std::string_view line;
    while (lines_.next(line)) {
      if (line.starts_with(kFileLineStart)) {
        readFile(line);
      } else {
        readRecord(line);
      }
    }
    std::sort(items_.begin(), items_.end(),
              [](const OwnedItem& a, const OwnedItem& b) { return a.number < b.number; });
    check(file);
  }

  void write(IndexWriter& writer, const std::string& path) const {
    auto next = items_.begin();
    writer.putFile(writer.newFile(), path, row_, [&](ItemRow& item) {
      if (next == items_.end()) return false;
      item = next->row(kindsByWord().at(next->kind));
      ++next;
      return true;
    });
  }

 private:
  [[noreturn]] void fail(const std::string& reason) const {
    throw Failure(lines_.path() + ": " + reason);
  }

  void readRecord(std::string_view line) {
    constexpr unsigned kFlags = rapidjson::kParseIterativeFlag;
    OwnedItem item;
    RecordHandler handler(item);
    rapidjson::MemoryStream stream(line.data(), line.size());
    reader_.Parse<kFlags>(stream, handler);
    if (!handler.hasSource()) fail("records without source; write them with --ranges");
    if (!handler.isSound()) fail("a text is not base64");
    if (item.line >= 0) items_.push_back(std::move(item));
  }

  void readFile(std::string_view line) {
    Json json;
    json.Parse<rapidjson::kParseIterativeFlag>(line.data(), line.size());
    row_.status = textOf(json, "status", "statusBytes").value_or("");
    row_.message = textOf(json, "message", "messageBytes");
    row_.size = numberOf(json, "sourceBytes").value_or(0);
    row_.records = numberOf(json, "recordCount").value_or(0);
    const Json::ValueType* const omitted = memberOf(json, "omitted");
    if (omitted != nullptr && omitted->IsArray()) {
      rapidjson::StringBuffer text;
      rapidjson::Writer<rapidjson::StringBuffer> writer(text);
      omitted->Accept(writer);
      row_.omitted = text.GetString();
    }
    const Json::ValueType* const others = memberOf(json, "unrecorded");
    if (others == nullptr || !others->IsArray()) {
      fail("a file without the key unrecorded; write it with --ranges");
    }
    for (const auto& other : others->GetArray()) takeUnrecorded(other);
  }

  void takeUnrecorded(const Json::ValueType& json) {
    if (!json.IsObject()) fail("an item is no object");
    OwnedItem item;
    item.number = numberOf(json, "item").value_or(-1);
    item.line = numberOf(json, "line").value_or(-1);
    item.lastLine = numberOf(json, "endLine").value_or(-1);
    item.parent = numberOf(json, "container");
    item.kind = textOf(json, "kind", "kindBytes").value_or("");
    item.name = textOf(json, "name", "nameBytes").value_or("");
    items_.push_back(std::move(item));
  }

  // Null if there is none.
  static const Json::ValueType* memberOf(const Json::ValueType& json, const char* key) {
    return json.HasMember(key) ? &json[key] : nullptr;
  }

  std::optional<std::string> textOf(const Json::ValueType& json, const char* key,
                                    const char* bytesKey) const {
    const Json::ValueType* const text = memberOf(json, key);
    if (text == nullptr || !text->IsString()) return std::nullopt;
    std::string result(text->GetString(), text->GetStringLength());
    const Json::ValueType* const bytes = memberOf(json, bytesKey);
    if (bytes != nullptr && bytes->IsString() &&
        !decodeBase64({bytes->GetString(), bytes->GetStringLength()}, result)) {
      fail(std::string(bytesKey) + " is not base64");
    }
    return result;
  }

  static std::optional<std::int64_t> numberOf(const Json::ValueType& json, const char* key) {
    const Json::ValueType* const number = memberOf(json, key);
    if (number == nullptr || !number->IsInt64()) return std::nullopt;
    return number->GetInt64();
  }

  // The items have to be those of a whole outline: each of them once, in an order in which the
  // innermost around an item comes before it.
  void check(const ShardFile& file) const {
    constexpr std::int64_t kMaxLine = INT32_MAX;
    std::int64_t number = 0;
    for (const OwnedItem& item : items_) {
      const bool isNext = item.number == number;
      const bool hasParent = !item.parent || (*item.parent >= 0 && *item.parent < number);
      const bool hasLines =
          item.line >= 0 && item.lastLine >= item.line && item.lastLine <= kMaxLine;
      if (!isNext || !hasParent || !hasLines || !kindsByWord().contains(item.kind)) {
        fail(file.path + ": items are missing or wrong; write all records, with --ranges");
      }
      ++number;
    }
  }

  LineReader& lines_;
  rapidjson::Reader reader_;
  FileRow row_;
  std::vector<OwnedItem> items_;
};

}  // namespace

bool NdjsonSource::write(IndexWriter& writer) {
  bool areGood = true;
  std::unordered_set<std::string> seen;
  for (const std::string& shard : shards_) {
    LineReader lines(shard);
    std::vector<ShardFile> files;
    readShard(lines, version_, [&](const ShardFile& file) { files.push_back(file); });
    if (files.empty() && version_.empty()) throw Failure(shard + ": empty, not even a header");
    for (const ShardFile& file : files) {
      if (!seen.insert(file.path).second) continue;
      areGood = areGood && file.isGood;
      FileLines(lines, file).write(writer, file.path);
    }
  }
  return areGood;
}

}  // namespace host::indexing
