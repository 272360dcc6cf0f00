// Runs the record pass over a hand-made tree.
#pragma once

#include <string>

#include "records/record_pass.h"
#include "support/capture.h"
#include "support/make_tree.h"
#include "tree/object_branch.h"

namespace support {

struct RecordRun {
  std::string answer;
  std::string printed;
};

inline RecordRun recordRunOf(ObjectBranch* root) {
  RecordRun run;
  run.printed = stdoutOf([&] { run.answer = StartGeneratingObjects(root, "").str(); });
  return run;
}

// Returns a root numbered 0, as at the start of a run.
inline ObjectBranch* newRoot(const std::string& contents = "a.js") {
  currentIndex = 0;
  return addNode(nullptr, kBranchFilePath, "filepath", contents);
}

inline ObjectBranch* addLine(ObjectBranch* parent, const std::string& contents) {
  return addNode(parent, kBranchLine, "line", contents);
}

}  // namespace support
