#include "support/dump_records.h"

#include <cstddef>
#include <vector>

#include "support/record_values.h"

namespace support {
namespace {

void putBefore(std::string& list, const std::string& entry, std::string_view separator) {
  if (!list.empty()) list.insert(0, separator);
  list.insert(0, entry);
}

struct Forest {
  std::vector<std::string> trees;  // one per record
  std::vector<std::string> below;  // the children of each record
  std::vector<int> parents;
};

// Children come after their parents, so building from the last record to the first finds each
// subtree complete.
Forest forestOf(std::string_view answer) {
  const std::vector<std::string> labels = valuesOf(answer, "branchTypeAsString");
  const std::vector<std::string> contents = valuesOf(answer, "contents");
  const std::vector<std::string> lines = valuesOf(answer, "lineNumber");
  const std::vector<std::string> parents = valuesOf(answer, "parentID");
  Forest forest{std::vector<std::string>(labels.size()), std::vector<std::string>(labels.size()),
                std::vector<int>(labels.size())};
  for (std::size_t i = labels.size(); i-- > 0;) {
    const std::string label = labels[i].substr(1, labels[i].size() - 2);
    std::string& tree = forest.trees[i];
    tree = label + contents[i] + "@" + lines[i];
    if (!forest.below[i].empty()) tree += "(" + forest.below[i] + ")";
    forest.parents[i] = std::stoi(parents[i]);
    if (forest.parents[i] >= 0)
      putBefore(forest.below[static_cast<std::size_t>(forest.parents[i])], tree, " ");
  }
  return forest;
}

}  // namespace

std::string dumpRecords(std::string_view answer) {
  const Forest forest = forestOf(answer);
  std::string dump;
  for (std::size_t i = forest.trees.size(); i-- > 0;)
    if (forest.parents[i] < 0) putBefore(dump, forest.trees[i], " ");
  return dump;
}

std::string dumpStatements(std::string_view answer) {
  const Forest forest = forestOf(answer);
  if (forest.trees.size() < 2) return "no wrapper";
  std::string dump = forest.below[1];
  for (std::size_t i = 2; i < forest.trees.size(); ++i)
    if (forest.parents[i] < 0) dump += (dump.empty() ? "| " : " | ") + forest.trees[i];
  return dump;
}

}  // namespace support
