#include "records/record_reader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "records/record_escapes.h"

namespace host {
namespace {

// No text between double quotes holds one of these but as an escape.
constexpr std::array<bool, 256> kEscaped = [] {
  std::array<bool, 256> table{};
  for (const auto& [byte, letter] : kRecordEscapes) table[static_cast<unsigned char>(byte)] = true;
  return table;
}();

std::size_t findEscaped(std::string_view text, std::size_t from) {
  const auto* const stop =
      std::find_if(text.data() + from, text.data() + text.size(),
                   [](char byte) { return kEscaped[static_cast<unsigned char>(byte)]; });
  return static_cast<std::size_t>(stop - text.data());
}

// Labels and tags are written as they are, so they are of bytes that need no escape.
bool isPlain(char byte) { return byte >= ' ' && byte <= '~' && byte != '"' && byte != '\\'; }

}  // namespace

// Compares eight bytes at a time, the last ones perhaps twice: with its length known the compiler
// makes of it a few instructions, but of the library's comparison a call.
template <std::size_t kSize>
[[gnu::always_inline]] inline bool RecordReader::take(const char (&literal)[kSize]) {
  constexpr std::size_t kBytes = kSize - 1;
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  if (rest_.size() < kBytes) return false;
  const char* const text = rest_.data();
  if constexpr (kBytes < kWord) {
    if (std::memcmp(text, literal, kBytes) != 0) return false;
  } else {
    const auto wordAt = [](const char* at) {
      std::uint64_t word = 0;
      std::memcpy(&word, at, kWord);
      return word;
    };
    std::uint64_t differs = wordAt(text + kBytes - kWord) ^ wordAt(literal + kBytes - kWord);
    for (std::size_t at = 0; at + kWord < kBytes; at += kWord) {
      differs |= wordAt(text + at) ^ wordAt(literal + at);
    }
    if (differs != 0) return false;
  }
  rest_.remove_prefix(kBytes);
  return true;
}

RecordReader::RecordReader(std::string_view answer, RecordTexts texts)
    : rest_(answer), answerBytes_(answer.size()), texts_(texts) {}

const Record* RecordReader::next() {
  if (ended_) return nullptr;
  const bool isFirst = rest_.size() == answerBytes_;
  // NOLINTNEXTLINE(bugprone-branch-clone): each branch is one step of the grammar
  if (isFirst && !take("[\n")) {
    fail();
  } else if (isFirst && take("]\n")) {
    if (!takeEnd()) fail();
  } else if (!takeRecord()) {
    fail();
  } else if (take(",\n") || (take("\n]\n") && takeEnd())) {
    ++recordCount_;
    return &record_;
  } else {
    fail();
  }
  return nullptr;
}

// Takes a number as it is written: no sign but a minus, no leading zeros. There are six in a
// record; the library's function takes three times as long.
bool RecordReader::takeNumber(std::int32_t& number) {
  constexpr std::size_t kMostDigits = 10;
  const bool isNegative = rest_.starts_with('-');
  const char* const first = rest_.data() + (isNegative ? 1 : 0);
  const char* const end = rest_.data() + std::min(rest_.size(), kMostDigits + 1);
  const char* digit = first;
  std::int64_t value = 0;
  for (; digit != end; ++digit) {
    const auto units = static_cast<unsigned>(*digit) - unsigned{'0'};
    if (units > 9) break;
    value = value * 10 + units;
  }
  if (digit == first || (*first == '0' && (isNegative || digit - first > 1))) return false;
  if (isNegative) value = -value;
  if (value != static_cast<std::int32_t>(value)) return false;
  number = static_cast<std::int32_t>(value);
  rest_.remove_prefix(static_cast<std::size_t>(digit - rest_.data()));
  return true;
}

bool RecordReader::takePlain(std::string_view& text) {
  const auto* const end = std::find_if_not(rest_.begin(), rest_.end(), isPlain);
  text = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
  rest_.remove_prefix(text.size());
  return true;
}

// Takes up to the closing quote and leaves it there. The text is a view of the answer where nothing
// is escaped, of the storage otherwise.
bool RecordReader::takeEscaped(std::string& storage, std::string_view& text) {
  std::size_t stop = findEscaped(rest_, 0);
  if (stop < rest_.size() && rest_[stop] == '"') {
    text = rest_.substr(0, stop);
    rest_.remove_prefix(stop);
    return true;
  }
  storage.clear();
  std::size_t run = 0;
  for (; stop + 1 < rest_.size() && rest_[stop] == '\\'; stop = findEscaped(rest_, run)) {
    const RecordEscape* const escape = escapeOf(rest_[stop + 1]);
    if (escape == nullptr) break;
    storage.append(rest_, run, stop - run);
    storage += escape->byte;
    run = stop + 2;
  }
  storage.append(rest_, run, stop - run);
  rest_.remove_prefix(stop);
  text = storage;
  return rest_.starts_with('"');
}

// The same, with the escapes left in the text.
bool RecordReader::skipEscaped(std::string_view& text) {
  std::size_t stop = findEscaped(rest_, 0);
  while (stop + 1 < rest_.size() && rest_[stop] == '\\' && escapeOf(rest_[stop + 1]) != nullptr) {
    stop = findEscaped(rest_, stop + 2);
  }
  text = rest_.substr(0, stop);
  rest_.remove_prefix(stop);
  return rest_.starts_with('"');
}

bool RecordReader::takeText(std::string& storage, std::string_view& text) {
  return texts_ == RecordTexts::kPlain ? takeEscaped(storage, text) : skipEscaped(text);
}

// All records of an answer have the same path.
bool RecordReader::takePath() {
  if (recordCount_ > 0 && rest_.starts_with(writtenPath_) &&
      rest_.substr(writtenPath_.size()).starts_with('"')) {
    rest_.remove_prefix(writtenPath_.size());
    return true;
  }
  writtenPath_ = rest_;
  if (!takeEscaped(pathStorage_, record_.filePath)) return false;
  writtenPath_.remove_suffix(rest_.size());
  return true;
}

// Takes what follows the opening bracket. A first child that is left out leaves a comma.
bool RecordReader::takeChildren() {
  record_.childNodeIds.clear();
  if (take("],\n")) return true;
  if (!take("   ")) return false;
  for (bool first = true; take(",\n      ") || (first && take("\n      ")); first = false) {
    std::int32_t child = 0;
    if (!takeNumber(child)) return false;
    record_.childNodeIds.push_back(child);
  }
  return take("\n    ],\n");
}

// Takes what follows the opening bracket. Each tag brings its own line end, and no comma.
bool RecordReader::takeTags() {
  record_.tags.clear();
  bool more = take("\n      \"");
  while (more) {
    std::string_view tag;
    if (!takePlain(tag) || !take("\"\n")) return false;
    record_.tags.push_back(tag);
    more = take("\n      \"") || take("      \"") || take("    \"");
  }
  return take("],\n");
}

bool RecordReader::takeRecord() {
  return take("  {\n    \"lineNumber\": ") && takeNumber(record_.lineNumber) &&
         take(",\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n    \"childNodeIDs\": [") &&
         takeChildren() && take("    \"nodeID\": ") && takeNumber(record_.nodeId) &&
         take(",\n    \"parentID\": ") && takeNumber(record_.parentId) &&
         take(",\n    \"fileID\": 0,\n    \"functionID\": ") && takeNumber(record_.functionId) &&
         take(",\n    \"isCalled\": false,\n    \"branchTypeAsString\": \"") &&
         takePlain(record_.label) && take("\",\n    \"filePath\": \"") && takePath() &&
         take("\",\n    \"tags\": [") && takeTags() && take("    \"contents\": \"") &&
         takeText(contentsStorage_, record_.contents) &&
         take("\",\n    \"simpleFunctionName\": \"") &&
         takeText(nameStorage_, record_.simpleFunctionName) &&
         take("\",\n    \"calloutIDs\": []\n  }");
}

bool RecordReader::takeEnd() {
  ended_ = rest_.empty();
  return ended_;
}

void RecordReader::fail() {
  ended_ = true;
  fault_ = "the answer leaves the record format in record " + std::to_string(recordCount_) +
           ", near byte " + std::to_string(answerBytes_ - rest_.size()) + " of " +
           std::to_string(answerBytes_);
}

}  // namespace host
