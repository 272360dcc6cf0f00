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

#include <charconv>
#include <cstring>

#include "text/byte_blocks.h"
#include "text/byte_set.h"

namespace records {
namespace {

constexpr text::ByteSet kEscaped{"\"'\\\n\r\t"};

// What a record takes beside its texts and its list of children, and what a child takes, at most.
constexpr std::size_t kFixedBytes = 400;
constexpr std::size_t kChildBytes = 20;
constexpr std::size_t kNumberBytes = 11;  // a sign and ten digits

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

char* putNumber(char* to, std::int32_t number) {
  return std::to_chars(to, to + kNumberBytes, number).ptr;
}

// Needs room for twice the text.
char* putEscaped(char* to, std::string_view text) {
  if (!text::holdsByte(text, [](text::Bytes bytes) {
        return bytes.are('"') | bytes.are('\'') | bytes.are('\\') | bytes.are('\n') |
               bytes.are('\r') | bytes.are('\t');
      })) {
    return put(to, text);
  }
  std::size_t run = 0;
  while (true) {
    const std::size_t stop = text::findMember(text, kEscaped, run);
    to = put(to, text.substr(run, stop - run));
    if (stop == text.size()) return to;
    *to++ = '\\';
    *to++ = escapeLetter(text[stop]);
    run = stop + 1;
  }
}

char* putChildren(char* to, std::span<const std::int32_t> ids, std::int32_t hiddenId) {
  if (ids.empty()) return put(to, "],\n");
  to = put(to, "   ");
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (ids[i] == hiddenId) continue;
    // required: by position, so a child behind a hidden first one has a comma before it.
    to = put(to, i == 0 ? "\n      " : ",\n      ");
    to = putNumber(to, ids[i]);
  }
  return put(to, "\n    ],\n");
}

std::size_t maxRecordBytes(const ObjectBranch& node, std::size_t childCount) {
  return kFixedBytes + kChildBytes * childCount + node.branchTypeAsString.size() +
         node.tags.size() +
         2 * (node.filePath.size() + node.contents.size() + node.simpleFunctionName.size());
}

}  // namespace

void appendEscaped(RecordText& out, std::string_view text) {
  if (!text.empty()) out.commit(putEscaped(out.reserve(2 * text.size()), text));
}

void appendRecord(RecordText& out, const ObjectBranch& node, const Relatives& relatives,
                  bool isLast) {
  char* to = out.reserve(maxRecordBytes(node, relatives.childIds.size()));
  to = put(to, "  {\n    \"lineNumber\": ");
  to = putNumber(to, node.lineNumber);
  to = put(to, ",\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n    \"childNodeIDs\": [");
  to = putChildren(to, relatives.childIds, relatives.hiddenChildId);
  to = put(to, "    \"nodeID\": ");
  to = putNumber(to, node.nodeID);
  to = put(to, ",\n    \"parentID\": ");
  to = putNumber(to, relatives.parentId);
  to = put(to, ",\n    \"fileID\": 0,\n    \"functionID\": ");
  to = node.functionID == -1 ? put(to, "-1") : putNumber(to, node.functionID);
  to = put(to, ",\n    \"isCalled\": false,\n    \"branchTypeAsString\": \"");
  to = put(to, node.branchTypeAsString);
  to = put(to, "\",\n    \"filePath\": \"");
  to = putEscaped(to, node.filePath);
  to = put(to, "\",\n    \"tags\": [");
  to = put(to, node.tags);
  to = put(to, "],\n    \"contents\": \"");
  to = putEscaped(to, node.contents);
  to = put(to, "\",\n    \"simpleFunctionName\": \"");
  to = putEscaped(to, node.simpleFunctionName);
  to = put(to, "\",\n    \"calloutIDs\": []\n  }");
  to = put(to, isLast ? "\n" : ",\n");
  out.commit(to);
}

}  // namespace records

std::string EscapeString(const std::string& text) {
  records::RecordText escaped;
  records::appendEscaped(escaped, text);
  return std::string(escaped.view());
}
