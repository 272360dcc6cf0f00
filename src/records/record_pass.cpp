#include "records/record_pass.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include "base/stream_writer.h"
#include "detect/declarations.h"
#include "detect/flow.h"
#include "detect/module_patterns.h"
#include "html/attributes.h"
#include "records/record_format.h"
#include "text/byte_set.h"
#include "text/file_names.h"
#include "text/string_primitives.h"
#include "tree/id_table.h"

namespace records {
namespace {

using Nodes = std::vector<ObjectBranch*>;

constexpr std::array<std::string_view, 11> kSkippedTexts{"{", "}", "};", "{}",  "",   "(",
                                                         ")", ";", ");", "));", "});"};

constexpr std::size_t kMaxSkippedBytes = 3;
static_assert(std::all_of(kSkippedTexts.begin(), kSkippedTexts.end(),
                          [](std::string_view text) { return text.size() <= kMaxSkippedBytes; }));

constexpr std::size_t kQuotedNameBytes = 25;  // of a callback's quoted text that stay in its name

// A function with this in its text is left out of its parent's child list; only the last one is.
constexpr std::string_view kHidingWord = "TTTTT";

bool isSkipped(const ObjectBranch& node) {
  // None of them holds white space, so reducing could not make one out of anything else.
  const std::string_view text = text::trimView(node.contents);
  return text.size() <= kMaxSkippedBytes && text::isOneOf(text, kSkippedTexts);
}

// Picks the nodes that get a record, prints a line for each, and enters their new numbers, which
// are dense from 0, into newIds.
Nodes keepNodes(const Nodes& nodes, tree::IdTable& newIds) {
  Nodes kept;
  kept.reserve(nodes.size());
  base::StreamWriter out(stdout);
  std::int32_t nextId = 0;
  for (ObjectBranch* node : nodes) {
    if (node->branchType == kBranchNone || isSkipped(*node)) continue;
    newIds.insert(node->nodeID, nextId);
    out << "nodeid was " << node->nodeID << " and now is " << nextId << "\n";
    ++nextId;
    kept.push_back(node);
  }
  return kept;
}

// Gives each kept node its new number and takes the others out of the child lists. The children of
// a dropped node are not lifted up in its place. A child still has its old number when its parent's
// turn comes, since it stands behind it.
void renumber(const Nodes& kept, const tree::IdTable& newIds) {
  for (ObjectBranch* node : kept) {
    node->nodeID = newIds.find(node->nodeID);
    std::erase_if(node->children, [&newIds](const ObjectBranch* child) {
      return child == nullptr || newIds.find(child->nodeID) == tree::IdTable::kAbsent;
    });
  }
}

// required: a node whose parent gets no record stays, as an orphan with the whole tree below it.
void dropLostParents(const Nodes& kept) {
  for (ObjectBranch* node : kept) {
    if (node->parent == nullptr) continue;
    // Kept nodes are numbered by their place in the list.
    const auto place = static_cast<std::size_t>(node->parent->nodeID);
    if (place >= kept.size() || kept[place] != node->parent) node->parent = nullptr;
  }
}

std::string previewName(const detect::Statement& statement) {
  const std::string_view contents = statement.text();
  // Single quotes come first, wherever they stand, and a double quote may close a single one.
  const auto findQuote = [contents](std::size_t from) {
    const std::size_t single = contents.find('\'', from);
    return single != std::string_view::npos ? single : contents.find('"', from);
  };
  const std::size_t first = findQuote(0);
  if (first != std::string_view::npos) {
    const std::size_t second = findQuote(first + 1);
    if (second != std::string_view::npos && second > first + 1) {
      std::string name(statement.firstWord());
      name += "('";
      name += html::textPreview(contents.substr(first + 1, second - first - 1), kQuotedNameBytes);
      name += "')";
      return name;
    }
  }
  return detect::functionNameOf(statement);
}

bool isConstructor(const std::vector<text::Part>& parts) {
  return parts.size() >= 2 && parts[0].is("function") &&
         text::kUpperCaseLetters(parts[1].firstByte());
}

void relabelFunction(ObjectBranch& node, const detect::Statement& statement) {
  node.branchTypeAsString = "function";
  node.simpleFunctionName =
      text::isPagePath(node.filePath) ? previewName(statement) : detect::functionNameOf(statement);
  if (detect::isInvokedFunction(statement)) node.tags += "\n      \"iife\"\n";
  if (isConstructor(statement.parts())) node.tags += "\n      \"constructor\"\n";
  if (node.parent->branchTypeAsString == "namespace") node.tags += "\n      \"global-function\"\n";
}

// Decides the label that a host sees. The order of the questions decides real files. A class node
// has no protection: it goes through the same chain as all others.
void relabel(ObjectBranch& node, detect::Statement& statement) {
  if (node.parent == nullptr) return;
  statement.reset(node.contents);
  if (detect::isLogic(statement)) {
    node.branchTypeAsString = "logic";
  } else if (detect::isImport(statement)) {
    node.branchTypeAsString = "define";
  } else if (detect::isLoop(statement)) {
    node.branchTypeAsString = "loop";
  } else if (node.branchType == kBranchAppendedDefine) {
    // The defines keep their label unless their text as a whole reads as one of the above.
  } else if (detect::isFunction(statement)) {
    relabelFunction(node, statement);
  } else if (detect::isVariable(statement) && node.branchTypeAsString != "namespace") {
    // required: the two forms differ.
    node.tags += node.tags.empty() ? "\n      \"variable\"\n" : "    \"variable\"\n";
    // The parent has its new label already: it stands earlier in the list.
    node.branchTypeAsString = node.parent->branchTypeAsString == "class" ? "classvar" : "line";
  }
}

// The number of the last function whose text holds the hiding word, 0 if there is none: nothing
// lists the node 0 as its child.
std::int32_t findHiddenChild(const Nodes& kept) {
  const auto hides = [](const ObjectBranch* node) {
    return node->parent != nullptr && node->branchTypeAsString == "function" &&
           text::contains(node->contents, kHidingWord);
  };
  const auto last = std::find_if(kept.rbegin(), kept.rend(), hides);
  return last == kept.rend() ? 0 : (*last)->nodeID;
}

RecordText writeRecords(const Nodes& kept) {
  RecordText out;
  out.append("[\n");
  const std::int32_t hiddenChildId = findHiddenChild(kept);
  for (const ObjectBranch* node : kept)
    appendRecord(out, *node, hiddenChildId, node == kept.back());
  out.append("]\n");
  return out;
}

}  // namespace

RecordText generate(ObjectBranch* root) {
  if (root == nullptr) {
    RecordText none;
    none.append("[]");
    return none;
  }
  Nodes nodes;
  AddObjectToVector(root, &nodes);
  // A node that stands in no list and uses up a number: part of the run's counts.
  const std::unique_ptr<ObjectBranch> spareNode(tree::makeNode());

  tree::IdTable newIds;
  const Nodes kept = keepNodes(nodes, newIds);
  renumber(kept, newIds);
  dropLostParents(kept);
  detect::Statement statement;
  for (ObjectBranch* node : kept) relabel(*node, statement);
  return writeRecords(kept);
}

}  // namespace records

std::ostringstream StartGeneratingObjects(ObjectBranch* root, std::string className) {
  static_cast<void>(className);
  std::ostringstream stream;
  stream << records::generate(root).view();
  return stream;
}

bool ShouldSkipNode(const ObjectBranch& node) { return records::isSkipped(node); }

std::string ExtractSimpleFunctionNameForPreview(const std::string& contents) {
  return records::previewName(detect::Statement(contents));
}
