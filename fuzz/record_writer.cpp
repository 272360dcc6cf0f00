// The record pass and the format, over a tree that the bytes describe: the whole answer and what is
// printed, held against the plain reading of the rules.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "detect/declarations.h"
#include "detect/flow.h"
#include "detect/module_patterns.h"
#include "harness.h"
#include "records/record_format.h"
#include "records/record_pass.h"
#include "targets.h"
#include "text/file_names.h"
#include "text/parts_list.h"
#include "tree/object_branch.h"
#include "written_tree.h"

namespace fuzz {
namespace {

using Nodes = std::vector<ObjectBranch*>;

// The nodes of the tree with a number that no earlier one has.
void listNodes(ObjectBranch* node, std::set<std::int32_t>& numbers, Nodes& nodes) {
  if (node == nullptr) return;
  if (numbers.insert(node->nodeID).second) nodes.push_back(node);
  for (ObjectBranch* child : node->children) listNodes(child, numbers, nodes);
}

// What the pass makes of a node, worked out beside it.
struct Expected {
  std::int32_t number = 0;
  const ObjectBranch* parent = nullptr;
  Nodes children;
  std::string label;
  std::string name;
  std::string tags;
};
using Expectations = std::map<const ObjectBranch*, Expected>;

void expectFunction(const ObjectBranch& node, const std::string& parentLabel, Expected& expected) {
  expected.label = "function";
  expected.name = IsHTMLFile(node.filePath) ? ExtractSimpleFunctionNameForPreview(node.contents)
                                            : functionName(node.contents, "");
  if (DetectIIFE(node.contents)) expected.tags += "\n      \"iife\"\n";
  std::vector<std::string> parts;
  PartsList(node.contents, parts);
  if (parts.size() >= 2 && parts[0] == "function" && parts[1][0] >= 'A' && parts[1][0] <= 'Z') {
    expected.tags += "\n      \"constructor\"\n";
  }
  if (parentLabel == "namespace") expected.tags += "\n      \"global-function\"\n";
}

void expectLabel(const ObjectBranch& node, const std::string& parentLabel, Expected& expected) {
  if (DetectJSLogic(node.contents)) {
    expected.label = "logic";
  } else if (DetectJSImports(node.contents)) {
    expected.label = "define";
  } else if (DetectJSLoop(node.contents)) {
    expected.label = "loop";
  } else if (node.branchType == kBranchAppendedDefine) {
    return;
  } else if (DetectJSFunctionDeclaration(node.contents)) {
    expectFunction(node, parentLabel, expected);
  } else if (DetectJSVariableDeclaration(node.contents) && expected.label != "namespace") {
    expected.tags += expected.tags.empty() ? "\n      \"variable\"\n" : "    \"variable\"\n";
    expected.label = parentLabel == "class" ? "classvar" : "line";
  }
}

// kept are the nodes that get a record, before the pass.
Expectations expectationsOf(const Nodes& kept) {
  std::set<std::int32_t> keptNumbers;
  for (const ObjectBranch* node : kept) keptNumbers.insert(node->nodeID);
  Expectations all;
  for (const ObjectBranch* node : kept) {
    Expected expected;
    expected.number = static_cast<std::int32_t>(all.size());
    if (std::find(kept.begin(), kept.end(), node->parent) != kept.end()) {
      expected.parent = node->parent;
    }
    for (ObjectBranch* child : node->children) {
      if (child != nullptr && keptNumbers.contains(child->nodeID)) {
        expected.children.push_back(child);
      }
    }
    expected.label = node->branchTypeAsString;
    expected.name = node->simpleFunctionName;
    expected.tags = node->tags;
    all.emplace(node, expected);
  }
  for (const ObjectBranch* node : kept) {
    Expected& expected = all.at(node);
    if (expected.parent != nullptr) {
      expectLabel(*node, all.at(expected.parent).label, expected);
    }
  }
  return all;
}

std::int32_t hiddenNumber(const Nodes& kept, const Expectations& all) {
  std::int32_t hidden = 0;
  for (const ObjectBranch* node : kept) {
    const Expected& expected = all.at(node);
    if (expected.parent != nullptr && expected.label == "function" &&
        node->contents.find("TTTTT") != std::string::npos) {
      hidden = expected.number;
    }
  }
  return hidden;
}

std::string expectedChildren(const Expected& expected, const Expectations& all,
                             std::int32_t hidden) {
  if (expected.children.empty()) return "],\n";
  std::string list = "   ";
  for (std::size_t i = 0; i < expected.children.size(); ++i) {
    // A node without a record of its own is listed if another one with its number has one.
    const ObjectBranch* child = expected.children[i];
    const auto kept = all.find(child);
    const std::int32_t number = kept == all.end() ? child->nodeID : kept->second.number;
    if (number == hidden) continue;
    list += i == 0 ? "\n      " : ",\n      ";
    list += std::to_string(number);
  }
  return list + "\n    ],\n";
}

std::string expectedAnswer(const Nodes& kept, const Expectations& all) {
  const std::int32_t hidden = hiddenNumber(kept, all);
  std::string text = "[\n";
  for (std::size_t i = 0; i < kept.size(); ++i) {
    const ObjectBranch& node = *kept[i];
    const Expected& expected = all.at(&node);
    const std::int32_t parent = expected.parent == nullptr ? -1 : all.at(expected.parent).number;
    text += "  {\n";
    text += "    \"lineNumber\": " + std::to_string(node.lineNumber) + ",\n";
    text += "    \"lineage\": \"\",\n";
    text += "    \"argumentList\": \"\",\n";
    text += "    \"childNodeIDs\": [" + expectedChildren(expected, all, hidden);
    text += "    \"nodeID\": " + std::to_string(expected.number) + ",\n";
    text += "    \"parentID\": " + std::to_string(parent) + ",\n";
    text += "    \"fileID\": 0,\n";
    text += "    \"functionID\": " + std::to_string(node.functionID) + ",\n";
    text += "    \"isCalled\": false,\n";
    text += "    \"branchTypeAsString\": \"" + expected.label + "\",\n";
    text += "    \"filePath\": \"" + EscapeString(node.filePath) + "\",\n";
    text += "    \"tags\": [" + expected.tags + "],\n";
    text += "    \"contents\": \"" + EscapeString(node.contents) + "\",\n";
    text += "    \"simpleFunctionName\": \"" + EscapeString(expected.name) + "\",\n";
    text += "    \"calloutIDs\": []\n";
    text += i + 1 < kept.size() ? "  },\n" : "  }\n";
  }
  return text + "]\n";
}

std::string plainlyEscaped(const std::string& text) {
  std::string escaped;
  for (const char byte : text) {
    if (byte == '\n') {
      escaped += "\\n";
    } else if (byte == '\r') {
      escaped += "\\r";
    } else if (byte == '\t') {
      escaped += "\\t";
    } else {
      if (byte == '"' || byte == '\'' || byte == '\\') escaped += '\\';
      escaped += byte;
    }
  }
  return escaped;
}

}  // namespace

void testRecordWriter(std::string_view input) {
  ObjectBranch* const root = treeWrittenAs(input);
  Nodes kept;
  std::set<std::int32_t> numbers;
  listNodes(root, numbers, kept);
  std::erase_if(kept, [](const ObjectBranch* node) {
    return node->branchType == kBranchNone || ShouldSkipNode(*node);
  });
  const Expectations all = expectationsOf(kept);
  const std::string expected = root == nullptr ? "[]" : expectedAnswer(kept, all);
  std::string reported;
  for (const ObjectBranch* node : kept) {
    reported += "nodeid was " + std::to_string(node->nodeID) + " and now is " +
                std::to_string(all.at(node).number) + "\n";
    require(EscapeString(node->contents) == plainlyEscaped(node->contents), "texts are escaped");
  }

  std::string answer;
  const Printed printed = printedBy([&] { answer = records::generate(root).view(); });
  require(answer == expected, "the records are those of the rules");
  require(printed == Printed{reported, ""}, "each record is reported");
}

}  // namespace fuzz
