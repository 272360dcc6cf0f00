// The record pass and the format, over a tree decoded from the bytes: the answer, the printed lines
// and the final state of every node, compared with the reference implementation.
#include <cstdint>
#include <string>
#include <vector>

#include "harness.h"
#include "records/record_format.h"
#include "records/record_pass.h"
#include "reference/plain_records.h"
#include "run_nodes.h"
#include "support/random_tree.h"
#include "targets.h"
#include "tree/object_branch.h"
#include "written_tree.h"

namespace fuzz {
namespace {

struct Passed {
  std::string answer;
  std::vector<std::string> nodes;
  std::int32_t nextId = 0;
  std::int32_t count = 0;
};

// Runs pass from the root of a tree of its own; the root is null if there are no nodes.
template <typename Pass>
Passed passed(std::string_view bytes, Pass pass) {
  resetCounts();
  const std::vector<ObjectBranch*> nodes = treeWrittenAs(bytes);
  Passed result;
  result.answer = pass(nodes.empty() ? nullptr : nodes.front());
  for (const ObjectBranch* node : nodes) result.nodes.push_back(support::describeNode(*node));
  result.nextId = currentIndex;
  result.count = objectCount;
  return result;
}

void testNode(const ObjectBranch& node) {
  const std::string& text = node.contents;
  require(ShouldSkipNode(node) == reference::shouldSkipNode(node), "what gets no record");
  require(EscapeString(text) == reference::escapeString(text), "texts are escaped");
  require(ExtractSimpleFunctionNameForPreview(text) == reference::previewName(text),
          "the name of a callback");
}

}  // namespace

void testRecordWriter(std::string_view input) {
  for (const ObjectBranch* node : treeWrittenAs(input)) testNode(*node);

  Printed printed;
  const Passed fast = passed(input, [&printed](ObjectBranch* root) {
    std::string answer;
    printed = printedBy([&] { answer = records::generate(root).view(); });
    return answer;
  });
  std::string reported;
  const Passed plain = passed(input, [&reported](ObjectBranch* root) {
    const reference::Records records = reference::generateRecords(root);
    reported = records.printed;
    return records.text;
  });
  require(fast.answer == plain.answer, "the records are those of the rules");
  require(printed == Printed{reported, ""}, "each record is reported");
  require(fast.nodes == plain.nodes, "nodes change as the rules say");
  require(fast.nextId == plain.nextId && fast.count == plain.count, "as many nodes are made");
}

}  // namespace fuzz
