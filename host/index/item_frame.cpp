// The bytes of a frame. A number has seven bits a byte, the lowest first, and the highest bit of
// all bytes but the last is set. A text is its length and its bytes. An optional value is 0, or its
// number and 1; an optional text is 0 if there is none, else 1 if it is plain and 2 if not, and
// then the text.
//
//   file   mark, status word, message?, size, has times, [modified, changed], hash?, omitted?,
//          records, items
//   item   kind, line, further lines, parent?, record?, label, name?, text?
//   label  0 for none, else the number of the label from 1 on; one that is new is followed by its
//          text
#include "index/item_frame.h"

#include <limits>
#include <utility>

#include "formats/omitted_json.h"
#include "index/content_hash.h"
#include "index/database.h"
#include "outline/outline.h"
#include "records/kept_records.h"
#include "records/status_words.h"

namespace host::index {
namespace {

constexpr std::uint64_t kMark = 0x51493101;
constexpr std::uint64_t kMaxNumber = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kMaxSmall = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t kMaxFrameLabels = 4096;  // more than any module has

constexpr unsigned kBits = 7;
constexpr std::uint64_t kMore = 0x80;

enum TextKind : std::uint8_t { kNoText, kPlainText, kOtherText };

void appendVarint(std::string& out, std::uint64_t number) {
  for (; number >= kMore; number >>= kBits) out += static_cast<char>(number | kMore);
  out += static_cast<char>(number);
}

void appendText(std::string& out, std::string_view text) {
  appendVarint(out, text.size());
  out += text;
}

void appendOptional(std::string& out, std::string_view text, bool isThere) {
  if (!isThere) {
    appendVarint(out, kNoText);
    return;
  }
  appendVarint(out, isPlainText(text) ? kPlainText : kOtherText);
  appendText(out, text);
}

// -1 stands for none.
void appendOptional(std::string& out, std::int32_t number) {
  appendVarint(out, static_cast<std::uint64_t>(std::int64_t{number} + 1));
}

class ItemWriter {
 public:
  ItemWriter(std::string& out, const KeptRecords& records)
      : out_(out), records_(records), sent_(records.labels().size(), 0) {}

  void write(const outline::Item& item) {
    const bool hasRecord = records_.holds(item.record);
    appendVarint(out_, static_cast<std::uint64_t>(item.kind));
    appendVarint(out_, static_cast<std::uint64_t>(item.firstLine));
    appendVarint(out_, static_cast<std::uint64_t>(item.lastLine - item.firstLine));
    appendOptional(out_, item.parent);
    appendOptional(out_, hasRecord ? item.record : -1);
    if (hasRecord) {
      writeLabel(records_.label(item.record));
    } else {
      appendVarint(out_, 0);
    }
    appendOptional(out_, item.name, !item.name.empty());
    appendOptional(out_, hasRecord ? records_.text(item.record) : "", hasRecord);
  }

 private:
  void writeLabel(std::size_t label) {
    if (sent_[label] != 0) {
      appendVarint(out_, sent_[label]);
      return;
    }
    sent_[label] = ++count_;
    appendVarint(out_, count_);
    appendText(out_, records_.labels()[label]);
  }

  std::string& out_;
  const KeptRecords& records_;
  std::vector<std::size_t> sent_;  // number in the frame by number of the answer
  std::size_t count_ = 0;
};

void appendFile(std::string& out, const FileReport& report, std::string_view status,
                std::string_view message, std::size_t records, std::size_t items) {
  appendVarint(out, kMark);
  appendText(out, status);
  appendOptional(out, message, !message.empty());
  appendVarint(out, report.sourceBytes);
  appendVarint(out, report.times ? 1 : 0);
  if (report.times) {
    appendVarint(out, static_cast<std::uint64_t>(report.times->modified));
    appendVarint(out, static_cast<std::uint64_t>(report.times->changed));
  }
  const bool wasRead = isGood(report.status) && report.source.size() == report.sourceBytes;
  appendOptional(out, wasRead ? contentHash(report.source) : "", wasRead);
  std::string omitted;
  if (report.omitted != nullptr && !report.omitted->empty())
    appendOmitted(omitted, *report.omitted);
  appendOptional(out, omitted, !omitted.empty());
  appendVarint(out, records);
  appendVarint(out, items);
}

std::string writeFrameFile(const FileReport& report, const FormatSettings& /*settings*/,
                           std::string& out) {
  KeptRecords records;
  std::vector<outline::Item> items;
  std::string fault;
  if (report.status == FileStatus::kAnswered) {
    items = outline::makeOutline(
        report.source, report.answer,
        {.fault = &fault, .onRecord = [&records](const Record& record) { records.take(record); }});
  }
  const bool isWhole = fault.empty();
  appendFile(out, report, isWhole ? statusWord(report.status) : kUnreadableWord,
             isWhole ? report.message : fault, records.count(), items.size());
  ItemWriter writer(out, records);
  for (const outline::Item& item : items) writer.write(item);
  return fault;
}

void writeNothing(const FormatSettings& /*settings*/, std::string& /*out*/) {}

}  // namespace

constinit const host::Format kFrameFormat = {.name = "index",
                                             .begin = writeNothing,
                                             .file = writeFrameFile,
                                             .end = writeNothing,
                                             .separator = "",
                                             .selection = Selection::kKinds,
                                             .needsSource = true};

bool ItemFrameReader::takeFile(FileRow& file) {
  std::uint64_t number = 0;
  std::string_view text;
  if (!takeNumber(kMark, number) || number != kMark || !takeText(text)) return false;
  file.status = text;
  if (!takeOptional(file.message) || !takeNumber(kMaxNumber, number)) return false;
  file.size = static_cast<std::int64_t>(number);
  if (!takeNumber(1, number)) return false;
  file.times.reset();
  if (number == 1) {
    std::uint64_t modified = 0;
    std::uint64_t changed = 0;
    const std::uint64_t any = std::numeric_limits<std::uint64_t>::max();
    if (!takeNumber(any, modified) || !takeNumber(any, changed)) return false;
    file.times = {static_cast<std::int64_t>(modified), static_cast<std::int64_t>(changed)};
  }
  if (!takeOptional(file.hash) || !takeOptional(file.omitted)) return false;
  if (!takeNumber(kMaxSmall, number)) return false;
  file.records = static_cast<std::int64_t>(number);
  return takeNumber(kMaxSmall, count_);
}

ItemFrameReader::State ItemFrameReader::takeItem(ItemRow& item) {
  if (taken_ == count_) return rest_.empty() ? State::kEnd : State::kMalformed;
  if (!takeWholeItem(item)) return State::kMalformed;
  ++taken_;
  return State::kItem;
}

bool ItemFrameReader::takeWholeItem(ItemRow& item) {
  std::uint64_t kind = 0;
  std::uint64_t line = 0;
  std::uint64_t more = 0;
  std::uint64_t parent = 0;
  std::uint64_t record = 0;
  if (!takeNumber(outline::kKindCount - 1, kind) || !takeNumber(kMaxSmall, line) ||
      !takeNumber(kMaxSmall, more) || !takeNumber(taken_, parent) ||
      !takeNumber(kMaxSmall + 1, record) || !takeLabel(item) ||
      !takeOptional(item.name, item.isNamePlain) || !takeOptional(item.text, item.isTextPlain)) {
    return false;
  }
  const auto optional = [](std::uint64_t number) {
    return number == 0 ? std::nullopt
                       : std::optional<std::int64_t>(static_cast<std::int64_t>(number) - 1);
  };
  item.kind = static_cast<outline::Kind>(kind);
  item.line = static_cast<std::int64_t>(line);
  item.lastLine = static_cast<std::int64_t>(line + more);
  item.parent = optional(parent);
  item.record = optional(record);
  return true;
}

bool ItemFrameReader::takeLabel(ItemRow& item) {
  std::uint64_t number = 0;
  if (!takeNumber(labels_.size() + 1, number)) return false;
  item.label.reset();
  if (number == 0) return true;
  if (number > labels_.size()) {
    std::string_view label;
    if (labels_.size() == kMaxFrameLabels || !takeText(label) || !isPlainText(label)) return false;
    labels_.push_back(label);
  }
  item.label = labels_[number - 1];
  return true;
}

bool ItemFrameReader::takeNumber(std::uint64_t limit, std::uint64_t& number) {
  number = 0;
  for (unsigned shift = 0; shift < 64 && !rest_.empty(); shift += kBits) {
    const auto byte = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    const std::uint64_t bits = byte & (kMore - 1);
    if (bits << shift >> shift != bits) return false;
    number |= bits << shift;
    if ((byte & kMore) == 0) return number <= limit;
  }
  return false;
}

bool ItemFrameReader::takeText(std::string_view& text) {
  std::uint64_t bytes = 0;
  if (!takeNumber(rest_.size(), bytes) || bytes > rest_.size()) return false;
  text = rest_.substr(0, bytes);
  rest_.remove_prefix(bytes);
  return true;
}

bool ItemFrameReader::takeOptional(std::optional<std::string_view>& text, bool& isPlain) {
  std::uint64_t kind = 0;
  if (!takeNumber(kOtherText, kind)) return false;
  text.reset();
  isPlain = kind != kOtherText;
  return kind == kNoText || takeText(text.emplace());
}

bool ItemFrameReader::takeOptional(std::optional<std::string>& text) {
  std::optional<std::string_view> view;
  bool isPlain = true;
  if (!takeOptional(view, isPlain)) return false;
  text.reset();
  if (view) text.emplace(*view);
  return true;
}

bool isSoundFrame(std::string_view frame) {
  using State = ItemFrameReader::State;
  ItemFrameReader reader(frame);
  FileRow file;
  ItemRow item;
  State state = reader.takeFile(file) ? State::kItem : State::kMalformed;
  while (state == State::kItem) state = reader.takeItem(item);
  return state == State::kEnd;
}

FileRow rowOfBadFrame(const std::string& path) {
  FileRow row;
  row.status = "failed";
  row.message = path + ": the worker sent a malformed result";
  return row;
}

}  // namespace host::index
