#include "records/record_pass.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
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
  bool mayHide;             // its text holds the hiding word
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
constexpr text::Needle kHidingWord = "TTTTT";

bool isSkipped(const ObjectBranch& node) {
  // None of them holds white space, so reducing could not make one out of anything else.
  const std::string_view text = text::trimView(node.contents);
  return text.size() <= kMaxSkippedBytes && text::isOneOf(text, kSkippedTexts);
}

// What a dropped node has in the table of new numbers.
constexpr std::int32_t kDropped = -2;

// Picks the nodes that get a record, prints a line for each, and enters their new numbers, which
// are dense from 0, into newIds.
KeptNodes keepNodes(ObjectBranch* root, const detect::AnswerTable& answers, const Prepare& prepare,
                    tree::IdTable& newIds) {
  KeptNodes kept;
  base::StreamWriter out(stdout);
  tree::walkWithDepth(root, [&](ObjectBranch* node, std::size_t depth) {
    prepare(*node, depth);
    const std::int32_t oldId = node->nodeID;
    const bool isDropped = node->branchType == kBranchNone || isSkipped(*node);
    const auto newId = isDropped ? kDropped : static_cast<std::int32_t>(kept.size());
    // Of nodes with one number only the first counts.
    if (newIds.insertNew(oldId, newId) && !isDropped) {
      out << "nodeid was " << oldId << " and now is " << newId << "\n";
      kept.push_back({node, answers.of(oldId), text::contains(node->contents, kHidingWord)});
    }
    return tree::Descend::kYes;
  });
  return kept;
}

// The numbers of the nodes while they change from old to new, in the order of the records.
class Renumbering {
 public:
  Renumbering(const KeptNodes& kept, const tree::IdTable& newIds) : kept_(kept), newIds_(newIds) {}

  // Gives the node at this place its new number and takes those that get no record out of its child
  // list. The children of a dropped node are not lifted up in its place. A child still has its old
  // number when its parent's turn comes, since it stands behind it.
  void renumber(std::size_t place) {
    ObjectBranch& node = *kept_[place].node;
    node.nodeID = static_cast<std::int32_t>(place);
    std::erase_if(node.children, [this](const ObjectBranch* child) {
      return child == nullptr || newIds_.find(child->nodeID) < 0;
    });
  }

  // The new number of a kept node, whether it has it yet or not; nothing for any other node.
  std::optional<std::int32_t> newIdOf(const ObjectBranch& node) const {
    if (isAt(node.nodeID, node)) return node.nodeID;
    const std::int32_t place = newIds_.find(node.nodeID);
    return isAt(place, node) ? std::optional(place) : std::nullopt;
  }

 private:
  bool isAt(std::int32_t place, const ObjectBranch& node) const {
    return place >= 0 && static_cast<std::size_t>(place) < kept_.size() &&
           kept_[static_cast<std::size_t>(place)].node == &node;
  }

  const KeptNodes& kept_;
  const tree::IdTable& newIds_;
};

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

// Numbers and labels the kept nodes and writes their records, all in one pass: the nodes are far
// more than what the caches hold.
class RecordWriter {
 public:
  RecordWriter(const KeptNodes& kept, const tree::IdTable& newIds, RecordText& out)
      : kept_(kept), numbers_(kept, newIds), out_(out) {}

  void run() {
    out_.append("[\n");
    // What is hidden shows only once all labels are known.
    const bool mayHide =
        std::any_of(kept_.begin(), kept_.end(), [](const KeptNode& each) { return each.mayHide; });
    for (std::size_t i = 0; i < kept_.size(); ++i) {
      if (i + kAhead < kept_.size()) tree::prefetch(kept_[i + kAhead].node);
      finish(i);
      if (!mayHide) write(i);
    }
    for (std::size_t i = 0; mayHide && i < kept_.size(); ++i) write(i);
    out_.append("]\n");
  }

 private:
  void finish(std::size_t place) {
    ObjectBranch& node = *kept_[place].node;
    numbers_.renumber(place);
    if (node.parent == nullptr) return;
    // required: a node whose parent gets no record stays, as an orphan with the whole tree below
    // it.
    if (!numbers_.newIdOf(*node.parent)) {
      node.parent = nullptr;
      return;
    }
    statement_.reset(node.contents, kept_[place].answers);
    relabel(node, statement_);
    if (kept_[place].mayHide && node.branchTypeAsString == "function") hiddenChildId_ = node.nodeID;
  }

  void write(std::size_t place) {
    const ObjectBranch& node = *kept_[place].node;
    childIds_.clear();
    for (const ObjectBranch* child : node.children)
      childIds_.push_back(numbers_.newIdOf(*child).value_or(child->nodeID));
    const std::int32_t parentId = node.parent == nullptr ? -1 : *numbers_.newIdOf(*node.parent);
    appendRecord(out_, node, {parentId, childIds_, hiddenChildId_}, place + 1 == kept_.size());
  }

  const KeptNodes& kept_;
  Renumbering numbers_;
  RecordText& out_;
  detect::Statement statement_;
  std::vector<std::int32_t> childIds_;
  // The number of the last function whose text holds the hiding word, 0 if there is none: nothing
  // lists the node 0 as its child.
  std::int32_t hiddenChildId_ = 0;
};

}  // namespace

RecordText generate(ObjectBranch* root, const detect::AnswerTable& answers, const Prepare& prepare,
                    RecordText out) {
  if (root == nullptr) {
    out.append("[]");
    return out;
  }
  tree::IdTable newIds;
  const KeptNodes kept = keepNodes(root, answers, prepare, newIds);
  // A node that stands in no list and uses up a number: part of the run's counts.
  const std::unique_ptr<ObjectBranch> spareNode(tree::makeNode());
  RecordWriter(kept, newIds, out).run();
  return out;
}

RecordText generate(ObjectBranch* root) {
  return generate(root, detect::AnswerTable(0), [](ObjectBranch&, std::size_t) {});
}

}  // namespace records

std::ostringstream StartGeneratingObjects(ObjectBranch* root, std::string className) {
  static_cast<void>(className);
  return records::toStream(records::generate(root));
}

bool ShouldSkipNode(const ObjectBranch& node) { return records::isSkipped(node); }

std::string ExtractSimpleFunctionNameForPreview(const std::string& contents) {
  return records::previewName(detect::Statement(contents));
}
