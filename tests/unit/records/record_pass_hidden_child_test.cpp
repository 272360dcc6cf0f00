// The one child that no child list contains: the last function marked TTTTT.
#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/make_tree.h"
#include "support/record_run.h"
#include "support/record_values.h"
#include "tree/object_branch.h"

namespace {

using support::addLine;
using support::addNode;
using support::newRoot;
using support::RecordRun;
using support::recordRunOf;
using support::valuesOf;

using Values = std::vector<std::string>;

// Returns the child list of the record with that number, from the bracket to the blanks before its
// end.
std::string childListOf(const std::string& answer, int id) {
  const std::size_t record = answer.find("    \"nodeID\": " + std::to_string(id) + ",\n");
  const std::string head = "\"childNodeIDs\": ";
  const std::size_t from = answer.rfind(head, record) + head.size();
  return answer.substr(from, answer.find("],\n", from) - from);
}

struct HiddenChild {
  const char* label;
  const char* contents;
};

struct HiddenCase {
  std::vector<HiddenChild> children;  // of a class node; the first gets the number 2
  const char* list;                   // its child list
  const char* why;
};

TEST(RecordPassHiddenChild, HidesTheLastMarkedFunctionFromItsParent) {
  const HiddenCase kCases[] = {
      {{{"line", "a"}, {"line", "b"}}, "[   \n      2,\n      3\n    ", "nothing is marked"},
      {{{"line", "a"}, {"function", "function TTTTT() {"}}, "[   \n      2\n    ", ""},
      {{{"function", "function TTTTT() {"}, {"line", "b"}}, "[   ,\n      3\n    ", "required: ,"},
      {{{"function", "function TTTTT() {"}}, "[   \n    ", "the only child"},
      {{{"line", "a"}, {"line", "f(TTTTT, function() {"}, {"line", "c"}},
       "[   \n      2,\n      4\n    ",
       "the label of this pass counts"},
      {{{"line", "a"}, {"function", "xTTTTTTx() {"}}, "[   \n      2\n    ", "a plain search"},
      {{{"line", "a"}, {"function", "TTTTT"}}, "[   \n      2\n    ", "the parser's label stays"},
      {{{"function", "function TTTTT() {"}, {"function", "function TTTTT() {"}, {"line", "c"}},
       "[   \n      2,\n      4\n    ",
       "the last one wins"},
      {{{"line", "a"}, {"function", "function TTTT() {"}},
       "[   \n      2,\n      3\n    ",
       "four are not a marker"},
      {{{"line", "a"}, {"function", "function ttttt() {"}},
       "[   \n      2,\n      3\n    ",
       "the case counts"},
      {{{"line", "a"}, {"line", "TTTTT();"}}, "[   \n      2,\n      3\n    ", "no function"},
      {{{"line", "a"}, {"function", "if (TTTTT) {"}},
       "[   \n      2,\n      3\n    ",
       "relabelled as logic"},
  };
  for (const HiddenCase& row : kCases) {
    ObjectBranch* parent = addNode(newRoot(), kBranchClass, "class", "Parent");
    for (const HiddenChild& child : row.children)
      addNode(parent, kBranchLine, child.label, child.contents);
    const RecordRun run = recordRunOf(parent->parent);
    EXPECT_EQ(childListOf(run.answer, 1), row.list) << row.why << "\n" << run.answer;
  }
}

TEST(RecordPassHiddenChild, AHiddenChildKeepsItsRecordItsParentAndItsChildren) {
  ObjectBranch* root = newRoot();
  ObjectBranch* marked = addNode(root, kBranchFunction, "function", "function TTTTT() {");
  addLine(marked, "inside");
  addLine(root, "behind");
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(valuesOf(run.answer, "contents"),
            (Values{"\"a.js\"", "\"function TTTTT() {\"", "\"inside\"", "\"behind\""}));
  EXPECT_EQ(valuesOf(run.answer, "parentID"), (Values{"-1", "0", "1", "0"}));
  EXPECT_EQ(childListOf(run.answer, 0), "[   ,\n      3\n    ");
  EXPECT_EQ(childListOf(run.answer, 1), "[   \n      2\n    ");
}

TEST(RecordPassHiddenChild, AnOrphanIsNotTheMarkedFunction) {
  ObjectBranch* root = newRoot();
  addLine(root, "a");
  addNode(root, kBranchFunction, "function", "function TTTTT() {");
  addNode(addLine(root, "});"), kBranchFunction, "function", "function TTTTT() {");
  const RecordRun run = recordRunOf(root);
  EXPECT_EQ(valuesOf(run.answer, "nodeID"), (Values{"0", "1", "2", "3"}));
  EXPECT_EQ(childListOf(run.answer, 0), "[   \n      1\n    ") << "2 is hidden, 3 has no parent";
}

}  // namespace
