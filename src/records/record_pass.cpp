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
#include "tree/walk.h"

namespace records {
namespace {

// A node that gets a record.
struct KeptNode {
  ObjectBranch* node;
  detect::Answers answers;  // what is known of its text already
};
using KeptNodes = std::vector<KeptNode>;

constexpr std::array<std::string_view, 11> kSkippedTexts{"{", "}", "};", "{}",  "",   "(",
                                                         ")", ";", ");", "));", "});"};

constexpr std::size_t kMaxSkippedBytes = 3;
static_assert(std::all_of(kSkippedTexts.begin(), kSkippedTexts.end(),
                          [](std::string_view text) { return text.size() <= kMaxSkippedBytes; }));

constexpr std::size_t kQuotedNameBytes = 25;  // of a callback's quoted text that stay in its name

// How many nodes ahead of the one at hand the next is fetched.
constexpr std::size_t kAhead = 4;

// A function with this in its text is left out of its parent's child list; only the last one is.
constexpr std::string_view kHidingWord = "TTTTT";

bool isSkipped(const ObjectBranch& node) {
  // None of them holds white space, so reducing could not make one out of anything else.
  const std::string_view text = text::trimView(node.contents);
  return text.size() <= kMaxSkippedBytes && text::isOneOf(text, kSkippedTexts);
}

// What a dropped node has in the table of new numbers.
constexpr std::int32_t kDropped = -2;

// Picks the nodes that get a record, prints a line for each, and enters their new numbers, which
// are dense from 0, into newIds.
KeptNodes keepNodes(ObjectBranch* root, const detect::AnswerTable& answers, tree::IdTable& newIds) {
  KeptNodes kept;
  base::StreamWriter out(stdout);
  tree::walkNumbered(root, newIds, [&](ObjectBranch* node) {
    if (node->branchType == kBranchNone || isSkipped(*node)) return kDropped;
    const auto newId = static_cast<std::int32_t>(kept.size());
    out << "nodeid was " << node->nodeID << " and now is " << newId << "\n";
    kept.push_back({node, answers.of(node->nodeID)});
    return newId;
  });
  return kept;
}

// Gives the node its new number and takes those without one out of its child list. The children of
// a dropped node are not lifted up in its place. A child still has its old number when its parent's
// turn comes, since it stands behind it.
void renumber(ObjectBranch& node, std::int32_t newId, const tree::IdTable& newIds) {
  node.nodeID = newId;
  std::erase_if(node.children, [&newIds](const ObjectBranch* child) {
    return child == nullptr || newIds.find(child->nodeID) < 0;
  });
}

// Whether the node is among those kept, of which the first done have their new number already.
bool isKept(const ObjectBranch* node, const KeptNodes& kept, std::size_t done,
            const tree::IdTable& newIds) {
  const auto standsAt = [&](std::int32_t place) {
    return place >= 0 && static_cast<std::size_t>(place) < kept.size() &&
           kept[static_cast<std::size_t>(place)].node == node;
  };
  if (standsAt(node->nodeID) && static_cast<std::size_t>(node->nodeID) < done) return true;
  return standsAt(newIds.find(node->nodeID));
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

bool isConstructor(const detect::Statement& statement) {
  const text::Part* const name = statement.part(1);
  return name != nullptr && text::kUpperCaseLetters(name->firstByte()) &&
         statement.partIs(0, "function");
}

void relabelFunction(ObjectBranch& node, const detect::Statement& statement) {
  node.branchTypeAsString = "function";
  node.simpleFunctionName =
      text::isPagePath(node.filePath) ? previewName(statement) : detect::functionNameOf(statement);
  if (detect::isInvokedFunction(statement)) node.tags += "\n      \"iife\"\n";
  if (isConstructor(statement)) node.tags += "\n      \"constructor\"\n";
  if (node.parent->branchTypeAsString == "namespace") node.tags += "\n      \"global-function\"\n";
}

// Decides the label that a host sees. The order of the questions decides real files. A class node
// has no protection: it goes through the same chain as all others.
void relabel(ObjectBranch& node, const detect::Statement& statement) {
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

// Numbers and labels the kept nodes. Gives the number of the last function whose text holds the
// hiding word, 0 if there is none: nothing lists the node 0 as its child.
std::int32_t finish(const KeptNodes& kept, const tree::IdTable& newIds) {
  std::int32_t hiddenChildId = 0;
  detect::Statement statement;
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (i + kAhead < kept.size()) tree::prefetch(kept[i + kAhead].node);
    ObjectBranch& node = *kept[i].node;
    const auto newId = static_cast<std::int32_t>(i);
    renumber(node, newId, newIds);
    if (node.parent == nullptr) continue;
    // required: a node whose parent gets no record stays, as an orphan with the whole tree below
    // it.
    if (!isKept(node.parent, kept, i + 1, newIds)) {
      node.parent = nullptr;
      continue;
    }
    statement.reset(node.contents, kept[i].answers);
    relabel(node, statement);
    if (node.branchTypeAsString == "function" && text::contains(node.contents, kHidingWord))
      hiddenChildId = newId;
  }
  return hiddenChildId;
}

void writeRecords(const KeptNodes& kept, std::int32_t hiddenChildId, RecordText& out) {
  out.append("[\n");
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (i + kAhead < kept.size()) tree::prefetch(kept[i + kAhead].node);
    appendRecord(out, *kept[i].node, hiddenChildId, i + 1 == kept.size());
  }
  out.append("]\n");
}

}  // namespace

RecordText generate(ObjectBranch* root, const detect::AnswerTable& answers, RecordText out) {
  if (root == nullptr) {
    out.append("[]");
    return out;
  }
  tree::IdTable newIds;
  const KeptNodes kept = keepNodes(root, answers, newIds);
  // A node that stands in no list and uses up a number: part of the run's counts.
  const std::unique_ptr<ObjectBranch> spareNode(tree::makeNode());
  writeRecords(kept, finish(kept, newIds), out);
  return out;
}

}  // namespace records

std::ostringstream StartGeneratingObjects(ObjectBranch* root, std::string className) {
  static_cast<void>(className);
  std::ostringstream stream;
  stream << records::generate(root, detect::AnswerTable(0)).view();
  return stream;
}

bool ShouldSkipNode(const ObjectBranch& node) { return records::isSkipped(node); }

std::string ExtractSimpleFunctionNameForPreview(const std::string& contents) {
  return records::previewName(detect::Statement(contents));
}
