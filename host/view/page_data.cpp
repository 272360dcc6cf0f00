#include "view/page_data.h"

#include <rapidjson/document.h>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "formats/json_text.h"
#include "outline/item.h"
#include "outline/omissions.h"
#include "outline/source_lines.h"

namespace host::view {
namespace {

constexpr std::string_view kMark = "QJVIEW1\n";
constexpr std::size_t kAlignment = 8;
constexpr std::string_view kPlainLabel = "line";

// As much as the column of labels can count; no module has so many.
constexpr std::size_t kMaxLabels = std::numeric_limits<std::uint16_t>::max() - 1;

std::uint32_t narrow(std::int64_t number) {
  return static_cast<std::uint32_t>(
      std::clamp<std::int64_t>(number, 0, std::numeric_limits<std::int32_t>::max()));
}

// At most the limit's bytes of the text, which does not end within a character then.
std::string_view cut(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  std::size_t end = limit;
  while (end > limit - 3 && (static_cast<unsigned char>(text[end]) & 0xc0U) == 0x80U) --end;
  return text.substr(0, end);
}

std::vector<outline::Omission> readOmissions(const std::string& json) {
  rapidjson::Document list;
  list.Parse(json.data(), json.size());
  std::vector<outline::Omission> omissions;
  if (!list.IsArray()) return omissions;
  for (const auto& row : list.GetArray()) {
    if (!row.IsObject()) continue;
    const auto number = [&row](const char* key) {
      const auto member = row.FindMember(key);
      return member != row.MemberEnd() && member->value.IsInt64() ? member->value.GetInt64() : 0;
    };
    const auto word = row.FindMember("reason");
    if (word == row.MemberEnd() || !word->value.IsString()) continue;
    const auto reason = outline::reasonCalled(word->value.GetString());
    if (!reason) continue;
    omissions.push_back({.reason = *reason,
                         .lines = number("lines"),
                         .lineCount = number("lineCount"),
                         .bytes = number("bytes"),
                         .byteCount = number("byteCount"),
                         .line = number("line")});
  }
  return omissions;
}

void appendPadding(std::string& out, char byte) {
  out.append((kAlignment - out.size() % kAlignment) % kAlignment, byte);
}

template <typename Number>
void appendNumberBytes(std::string& out, Number number) {
  // The lowest byte comes first on every machine that this runs on.
  std::array<char, sizeof number> bytes;
  std::copy_n(reinterpret_cast<const char*>(&number), sizeof number, bytes.data());
  out.append(bytes.data(), bytes.size());
}

template <typename Number>
constexpr std::string_view kTypeName{};
template <>
constexpr std::string_view kTypeName<std::uint8_t> = "u8";
template <>
constexpr std::string_view kTypeName<std::uint16_t> = "u16";
template <>
constexpr std::string_view kTypeName<std::uint32_t> = "u32";
template <>
constexpr std::string_view kTypeName<std::int32_t> = "i32";
template <>
constexpr std::string_view kTypeName<double> = "f64";

}  // namespace

class ColumnWriter {
 public:
  // A column with what the function makes of each row.
  template <typename Rows, typename Function>
  void add(std::string_view name, const Rows& rows, const Function& valueOf) {
    using Value = decltype(valueOf(rows.front()));
    describe(name, kTypeName<Value>, rows.size());
    for (const auto& row : rows) appendNumberBytes(bytes_, valueOf(row));
    appendPadding(bytes_, '\0');
  }

  void addBytes(std::string_view name, std::string_view bytes) {
    describe(name, "u8", bytes.size());
    bytes_ += bytes;
    appendPadding(bytes_, '\0');
  }

  const std::string& columns() const { return columns_; }
  const std::string& bytes() const { return bytes_; }

 private:
  void describe(std::string_view name, std::string_view type, std::size_t count) {
    columns_.append(columns_.empty() ? "[\"" : ",[\"").append(name).append("\",\"").append(type);
    columns_ += "\",";
    appendNumber(columns_, count);
    columns_ += ']';
  }

  std::string columns_;
  std::string bytes_;
};

void PageData::Texts::add(std::string_view text) {
  lengths.push_back(static_cast<std::uint32_t>(text.size()));
  bytes += text;
}

void PageData::addFile(std::string_view path, const index::FileRow& row,
                       const index::NextItem& next, std::optional<std::string_view> source) {
  const Place from{files_.size(), items_.size(), names_.size(), texts_.size()};
  File& file = files_.emplace_back();
  file.status = statusNumber(row.status);
  file.size = static_cast<double>(row.size);
  file.records = narrow(row.records);
  paths_.add(path);
  messages_.add(row.message.value_or(""));
  const std::vector<outline::Omission> omissions = readOmissions(row.omitted.value_or("[]"));
  for (const outline::Omission& omission : omissions) {
    file.omittedLines += narrow(omission.lines);
    file.omittedBytes += static_cast<double>(omission.bytes);
    file.lines = narrow(omission.lineCount);
  }
  omitted_.add(omissions.empty() ? "" : outline::describe(omissions));
  takeSource(source);
  takeItems(next, source.value_or(""));

  const bool leavesPlainOut = !keepsAllItems_ && items_.size() > kManyItems;
  const std::size_t limit = items_.size() > kSomeItems ? kShortText : kLongText;
  const bool isNew = (leavesPlainOut && !leavesPlainOut_) || limit < textLimit_;
  leavesPlainOut_ = leavesPlainOut_ || leavesPlainOut;
  textLimit_ = std::min(textLimit_, limit);
  applyLimits(isNew ? Place{} : from);
}

void PageData::takeSource(const std::optional<std::string_view>& source) {
  files_.back().hasSource = source.has_value();
  const bool isWanted = sourceChoice_ != SourceChoice::kNever;
  sources_.add(isWanted && source ? *source : "");
  if (sourceChoice_ != SourceChoice::kIfSmall || sources_.bytes.size() < kSmallSources) return;
  sourceChoice_ = SourceChoice::kNever;
  sources_.bytes.clear();
  sources_.bytes.shrink_to_fit();
}

void PageData::takeItems(const index::NextItem& next, std::string_view source) {
  File& file = files_.back();
  const outline::SourceLines lines(source);
  const std::size_t first = items_.size();
  const auto beginOf = [&](std::int64_t line) {
    return line > lines.count() ? source.size() : lines.begin(static_cast<std::int32_t>(line));
  };
  index::ItemRow row;
  while (next(row)) {
    Item& item = items_.emplace_back();
    item.kind = static_cast<std::uint8_t>(row.kind);
    item.isPlain = row.kind == outline::Kind::kStatement && row.label == kPlainLabel;
    item.label = row.label ? labelNumber(*row.label) : 0;
    item.line = narrow(row.line);
    item.more = narrow(row.lastLine - row.line);
    item.parent = row.parent ? narrow(static_cast<std::int64_t>(first) + *row.parent + 1) : 0;
    if (!source.empty() && row.line > 0) {
      item.bytes = narrow(static_cast<std::int64_t>(beginOf(row.lastLine + 1) - beginOf(row.line)));
    }
    const std::string_view name = cut(row.name.value_or(""), kLongText);
    const std::string_view text = cut(row.text.value_or(""), kLongText);
    item.nameBytes = static_cast<std::uint32_t>(name.size());
    item.textBytes = static_cast<std::uint32_t>(text.size());
    item.isCut = row.text && text.size() < row.text->size();
    names_ += name;
    texts_ += text;
    file.lines = std::max(file.lines, item.line + item.more);
  }
  file.items = narrow(static_cast<std::int64_t>(items_.size() - first));
  if (source.empty()) return;
  const bool endsWithLine = lines.begin(lines.count()) == source.size();
  file.lines = static_cast<std::uint32_t>(lines.count() - (endsWithLine ? 1 : 0));
}

std::uint8_t PageData::statusNumber(std::string_view status) {
  auto found = std::find(statuses_.begin(), statuses_.end(), status);
  if (found == statuses_.end()) found = statuses_.emplace(found, status);
  return static_cast<std::uint8_t>(found - statuses_.begin());
}

std::uint16_t PageData::labelNumber(std::string_view label) {
  const auto known = labelNumbers_.find(label);
  if (known != labelNumbers_.end()) return known->second;
  if (labels_.size() == kMaxLabels) return 0;
  labels_.emplace_back(label);
  const auto number = static_cast<std::uint16_t>(labels_.size());
  labelNumbers_.emplace(label, number);
  return number;
}

// Leaves plain statements out and cuts texts, as the limits ask, from the place on. What a
// statement holds moves to what is around the statement.
void PageData::applyLimits(const Place& from) {
  std::vector<std::uint32_t> newNumbers(items_.size() - from.item);  // one more; 0 for the file
  std::size_t item = from.item;
  std::size_t kept = from.item;
  std::size_t name = from.name;
  std::size_t text = from.text;
  std::size_t keptName = from.name;
  std::size_t keptText = from.text;
  const auto move = [](std::string& texts, std::size_t to, std::size_t place, std::size_t bytes) {
    std::copy_n(texts.begin() + static_cast<std::ptrdiff_t>(place), bytes,
                texts.begin() + static_cast<std::ptrdiff_t>(to));
  };
  for (std::size_t number = from.file; number < files_.size(); ++number) {
    File& file = files_[number];
    const std::size_t end = item + file.items;
    for (; item < end; ++item) {
      Item moved = items_[item];
      const std::uint32_t parent = moved.parent == 0 ? 0 : newNumbers[moved.parent - 1 - from.item];
      const std::string_view wholeText = std::string_view(texts_).substr(text, moved.textBytes);
      const std::size_t namePlace = std::exchange(name, name + moved.nameBytes);
      const std::size_t textPlace = std::exchange(text, text + moved.textBytes);
      if (leavesPlainOut_ && moved.isPlain) {
        newNumbers[item - from.item] = parent;
        --file.items;
        ++file.hidden;
        continue;
      }
      moved.parent = parent;
      moved.textBytes = static_cast<std::uint32_t>(cut(wholeText, textLimit_).size());
      moved.isCut = moved.isCut || moved.textBytes < wholeText.size();
      move(names_, keptName, namePlace, moved.nameBytes);
      move(texts_, keptText, textPlace, moved.textBytes);
      keptName += moved.nameBytes;
      keptText += moved.textBytes;
      items_[kept] = moved;
      newNumbers[item - from.item] = static_cast<std::uint32_t>(++kept);
    }
  }
  items_.resize(kept);
  names_.resize(keptName);
  texts_.resize(keptText);
}

std::string PageData::header() const {
  std::string json = "{\"tool\":\"quorl-js " QUORL_VERSION "\",";
  const auto appendList = [&json](std::string_view key, const auto& words) {
    json.append("\"").append(key).append("\":[");
    std::string_view before;
    for (const auto& word : words) {
      json += std::exchange(before, ",");
      appendJsonString(json, word);
    }
    json += "],";
  };
  appendList("kinds", outline::kindWords());
  appendList("labels", labels_);
  appendList("statuses", statuses_);
  std::uint64_t hidden = 0;
  for (const File& file : files_) hidden += file.hidden;
  json += "\"textLimit\":";
  appendNumber(json, textLimit_);
  json += ",\"hidden\":";
  appendNumber(json, hidden);
  json.append(",\"sources\":").append(hasSources() ? "true" : "false");
  return json;
}

void PageData::appendFiles(ColumnWriter& out) const {
  const auto addTexts = [&out](std::string_view name, const Texts& texts) {
    out.add(std::string(name) + "#", texts.lengths, [](std::uint32_t length) { return length; });
    out.addBytes(name, texts.bytes);
  };
  addTexts("file.path", paths_);
  out.add("file.status", files_, [](const File& file) { return file.status; });
  addTexts("file.message", messages_);
  out.add("file.size", files_, [](const File& file) { return file.size; });
  out.add("file.lines", files_, [](const File& file) { return file.lines; });
  out.add("file.records", files_, [](const File& file) { return file.records; });
  out.add("file.items", files_, [](const File& file) { return file.items; });
  out.add("file.hidden", files_, [](const File& file) { return file.hidden; });
  out.add("file.omittedLines", files_, [](const File& file) { return file.omittedLines; });
  out.add("file.omittedBytes", files_, [](const File& file) { return file.omittedBytes; });
  addTexts("file.omitted", omitted_);
  out.add("file.hasSource", files_, [this](const File& file) {
    return static_cast<std::uint8_t>(hasSources() && file.hasSource);
  });
  addTexts("file.source",
           hasSources() ? sources_ : Texts{std::vector<std::uint32_t>(files_.size()), {}});
}

// Numbers are kept small, which makes them pack well: lines and parents are distances.
void PageData::appendItems(ColumnWriter& out) const {
  out.add("item.kind", items_, [](const Item& item) { return item.kind; });
  out.add("item.label", items_, [](const Item& item) { return item.label; });
  std::size_t left = 0;  // of the file's items
  std::size_t file = 0;
  std::uint32_t before = 0;
  out.add("item.line", items_, [&](const Item& item) {
    for (; left == 0; before = 0) left = files_[file++].items;
    --left;
    const std::uint32_t last = std::exchange(before, item.line);
    return static_cast<std::int32_t>(item.line) - static_cast<std::int32_t>(last);
  });
  out.add("item.more", items_, [](const Item& item) { return item.more; });
  std::uint32_t number = 0;
  out.add("item.parent", items_, [&number](const Item& item) {
    ++number;
    return item.parent == 0 ? std::uint32_t{0} : number - item.parent;
  });
  out.add("item.bytes", items_, [](const Item& item) { return item.bytes; });
  out.add("item.cut", items_,
          [](const Item& item) { return static_cast<std::uint8_t>(item.isCut); });
  out.add("item.name#", items_, [](const Item& item) { return item.nameBytes; });
  out.addBytes("item.name", names_);
  out.add("item.text#", items_, [](const Item& item) { return item.textBytes; });
  out.addBytes("item.text", texts_);
}

std::string PageData::finish() {
  ColumnWriter columns;
  appendFiles(columns);
  appendItems(columns);
  std::string json = header() + ",\"columns\":[" + columns.columns() + "]}";
  std::string bytes(kMark);
  json.append((kAlignment - json.size() % kAlignment) % kAlignment, ' ');
  appendNumberBytes(bytes, static_cast<std::uint32_t>(json.size()));
  appendNumberBytes(bytes, std::uint32_t{0});
  return bytes + json + columns.bytes();
}

}  // namespace host::view
