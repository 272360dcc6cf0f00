// One whole record, as the writer puts it:
//
//   {
//     "lineNumber": 2,
//     "lineage": "",
//     "argumentList": "",
//     "childNodeIDs": [             three blanks behind the bracket; "[]," without children
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
// ],                                the tag text brings its own line ends, the bracket no
// indentation
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
#include <charconv>

#include "text/byte_set.h"

namespace records {
namespace {

constexpr text::ByteSet kEscaped{"\"'\\\n\r\t"};

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

void appendNumber(std::string& out, std::int32_t number) {
  std::array<char, 12> digits;  // a sign and ten digits at most
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  out.append(digits.data(), end);
}

void appendChildren(std::string& out, const std::vector<ObjectBranch*>& children,
                    std::int32_t hiddenChildId) {
  if (children.empty()) {
    out += "],\n";
    return;
  }
  out += "   ";
  for (std::size_t i = 0; i < children.size(); ++i) {
    if (children[i] == nullptr || children[i]->nodeID == hiddenChildId) continue;
    // required: by position, so a child behind a hidden first one has a comma before it.
    out += i == 0 ? "\n      " : ",\n      ";
    appendNumber(out, children[i]->nodeID);
  }
  out += "\n    ],\n";
}

}  // namespace

void appendEscaped(std::string& out, std::string_view text) {
  auto run = text.begin();
  while (true) {
    const auto stop = std::find_if(run, text.end(), kEscaped);
    out.append(run, stop);
    if (stop == text.end()) return;
    out.push_back('\\');
    out.push_back(escapeLetter(*stop));
    run = stop + 1;
  }
}

void appendRecord(std::string& out, const ObjectBranch& node, std::int32_t hiddenChildId,
                  bool isLast) {
  out += "  {\n    \"lineNumber\": ";
  appendNumber(out, node.lineNumber);
  out += ",\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n    \"childNodeIDs\": [";
  appendChildren(out, node.children, hiddenChildId);
  out += "    \"nodeID\": ";
  appendNumber(out, node.nodeID);
  out += ",\n    \"parentID\": ";
  appendNumber(out, node.parent == nullptr ? -1 : node.parent->nodeID);
  out += ",\n    \"fileID\": 0,\n    \"functionID\": ";
  appendNumber(out, node.functionID);
  out += ",\n    \"isCalled\": false,\n    \"branchTypeAsString\": \"";
  out += node.branchTypeAsString;
  out += "\",\n    \"filePath\": \"";
  appendEscaped(out, node.filePath);
  out += "\",\n    \"tags\": [";
  out += node.tags;
  out += "],\n    \"contents\": \"";
  appendEscaped(out, node.contents);
  out += "\",\n    \"simpleFunctionName\": \"";
  appendEscaped(out, node.simpleFunctionName);
  out += "\",\n    \"calloutIDs\": []\n  }";
  out += isLast ? "\n" : ",\n";
}

}  // namespace records

std::string EscapeString(const std::string& text) {
  std::string escaped;
  records::appendEscaped(escaped, text);
  return escaped;
}
