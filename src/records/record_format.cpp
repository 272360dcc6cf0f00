// One whole record, as the writer puts it:
//
//   {
//     "lineNumber": 2,
//     "lineage": "",
//     "argumentList": "",
//     "childNodeIDs": [          three blanks behind the bracket; "[]," without children
//       4
//     ],
//     "nodeID": 3,
//     "parentID": 2,
//     "fileID": 0,
//     "functionID": -1,
//     "isCalled": false,
//     "branchTypeAsString": "function",
//     "filePath": "/src/greet.js",
//     "tags": [
//       "constructor"
// ],                             the tag text brings its own line ends, the bracket no blanks
//     "contents": "function Greeter(name) {",
//     "simpleFunctionName": "Greeter",
//     "calloutIDs": []
//   }
//
// It is not JSON where two tags follow each other without a comma, where a hidden first child
// leaves a comma behind the bracket, and where a single quote is escaped.
#include "records/record_format.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/decimal.h"
#include "text/byte_blocks.h"
#include "text/byte_set.h"

namespace records {
namespace {

constexpr text::ByteSet kEscaped{"\"'\\\n\r\t"};

text::Bytes::Mask areEscaped(const text::Bytes& bytes) {
  return bytes.are('"') | bytes.are('\'') | bytes.are('\\') | bytes.are('\n') | bytes.are('\r') |
         bytes.are('\t');
}

char escapeLetter(char byte) {
  switch (byte) {
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\t':
      return 't';
    default:
      return byte;
  }
}

// The put functions write at to, where there must be room, and give the end of what they wrote.

char* put(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

char* putEscape(char* to, char byte) {
  *to++ = '\\';
  *to++ = escapeLetter(byte);
  return to;
}

// Needs room for twice the text, into which whole blocks may be copied. Blocks make a run of a
// script 3 % faster than a byte at a time.
char* putEscaped(char* to, std::string_view text) {
  std::size_t i = 0;
  while (i + text::kBlockBytes <= text.size()) {
    const char* const block = text.data() + i;
    const std::size_t plain = text::firstSet(areEscaped(text::Bytes(block)));
    std::memcpy(to, block, text::kBlockBytes);
    to += plain;
    i += plain;
    if (plain < text::kBlockBytes) to = putEscape(to, text[i++]);
  }
  for (; i < text.size(); ++i) {
    if (kEscaped(text[i])) {
      to = putEscape(to, text[i]);
    } else {
      *to++ = text[i];
    }
  }
  return to;
}

// A record is written by a RecordWriter into room that a RoomCounter has counted. Both go through
// the same writeRecord, so that the room follows from the texts.

class RoomCounter {
 public:
  constexpr void text(std::string_view text) { bytes_ += text.size(); }
  constexpr void number(std::int32_t) { bytes_ += base::kMaxDecimalBytes; }
  constexpr void functionNumber(std::int32_t id) { number(id); }
  constexpr void escaped(std::string_view text) { bytes_ += 2 * text.size(); }
  constexpr std::size_t bytes() const { return bytes_; }

 private:
  std::size_t bytes_ = 0;
};

class RecordWriter {
 public:
  explicit RecordWriter(char* to) : to_(to) {}
  void text(std::string_view text) { to_ = put(to_, text); }
  void number(std::int32_t number) { to_ = base::putDecimal(to_, number); }
  void functionNumber(std::int32_t id) { id == -1 ? text("-1") : number(id); }
  void escaped(std::string_view text) { to_ = putEscaped(to_, text); }
  const char* end() const { return to_; }

 private:
  char* to_;
};

template <typename Out>
constexpr void writeChild(Out& out, bool isFirst, std::int32_t id) {
  out.text(isFirst ? "\n      " : ",\n      ");
  out.number(id);
}

template <typename Out>
constexpr void writeChildren(Out& out, std::span<const std::int32_t> ids, std::int32_t hiddenId) {
  if (ids.empty()) return out.text("],\n");
  out.text("   ");
  for (std::size_t i = 0; i < ids.size(); ++i) {
    // required: by position, so a child behind a hidden first one has a comma before it.
    if (ids[i] != hiddenId) writeChild(out, i == 0, ids[i]);
  }
  out.text("\n    ],\n");
}

template <typename Out, typename Node>
constexpr void writeRecord(Out& out, const Node& node, std::string_view escapedPath,
                           const Relatives& relatives, bool isLast) {
  out.text("  {\n    \"lineNumber\": ");
  out.number(node.lineNumber);
  out.text(",\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n    \"childNodeIDs\": [");
  writeChildren(out, relatives.childIds, relatives.hiddenChildId);
  out.text("    \"nodeID\": ");
  out.number(node.nodeID);
  out.text(",\n    \"parentID\": ");
  out.number(relatives.parentId);
  out.text(",\n    \"fileID\": 0,\n    \"functionID\": ");
  out.functionNumber(node.functionID);
  out.text(",\n    \"isCalled\": false,\n    \"branchTypeAsString\": \"");
  out.text(node.branchTypeAsString);
  out.text("\",\n    \"filePath\": \"");
  out.text(escapedPath);
  out.text("\",\n    \"tags\": [");
  out.text(node.tags);
  out.text("],\n    \"contents\": \"");
  out.escaped(node.contents);
  out.text("\",\n    \"simpleFunctionName\": \"");
  out.escaped(node.simpleFunctionName);
  out.text("\",\n    \"calloutIDs\": []\n  }");
  out.text(isLast ? "\n" : ",\n");
}

// The parts of a node that a record holds, with empty texts.
struct TextlessNode {
  std::int32_t lineNumber = 0;
  std::int32_t nodeID = 0;
  std::int32_t functionID = 0;
  std::string_view branchTypeAsString;
  std::string_view tags;
  std::string_view contents;
  std::string_view simpleFunctionName;
};

template <std::size_t kChildren>
consteval std::size_t roomWithoutTexts(bool isLast) {
  constexpr std::int32_t kHidden = -1;
  constexpr std::array<std::int32_t, kChildren> kIds{};
  RoomCounter room;
  writeRecord(room, TextlessNode(), {}, {0, kIds, kHidden}, isLast);
  return room.bytes();
}

// What each child takes, and what a record takes beside its texts and children, whatever its place.
// A list of children takes more than an empty one.
constexpr std::size_t kChildBytes = roomWithoutTexts<2>(false) - roomWithoutTexts<1>(false);
constexpr std::size_t kFixedBytes =
    std::max({roomWithoutTexts<0>(false), roomWithoutTexts<0>(true),
              roomWithoutTexts<1>(false) - kChildBytes, roomWithoutTexts<1>(true) - kChildBytes});

}  // namespace

std::size_t maxRecordBytes(const ObjectBranch& node, std::size_t escapedPathBytes,
                           std::size_t childCount) {
  return kFixedBytes + kChildBytes * childCount + node.branchTypeAsString.size() +
         node.tags.size() + escapedPathBytes +
         2 * (node.contents.size() + node.simpleFunctionName.size());
}

void appendEscaped(RecordText& out, std::string_view text) {
  if (!text.empty()) out.commit(putEscaped(out.reserve(2 * text.size()), text));
}

void appendRecord(RecordText& out, const ObjectBranch& node, std::string_view escapedPath,
                  const Relatives& relatives, bool isLast) {
  const std::size_t room = maxRecordBytes(node, escapedPath.size(), relatives.childIds.size());
  RecordWriter writer(out.reserve(room));
  writeRecord(writer, node, escapedPath, relatives, isLast);
  out.commit(writer.end());
}

}  // namespace records

std::string EscapeString(const std::string& text) {
  records::RecordText escaped;
  records::appendEscaped(escaped, text);
  return std::string(escaped.view());
}
