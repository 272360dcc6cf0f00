// Runs the tree builder over a text, for tests of the scanner route.
#pragma once

#include <string>
#include <vector>

#include "builder/tree_builder.h"
#include "support/capture.h"
#include "support/make_tree.h"
#include "tree/object_branch.h"

namespace support {

struct ScannerRequest {
  std::string text;
  std::string path = "a.txt";
  std::string namespaceName = "";
  std::string className = "";
  bool isJavaScript = true;
  std::string chunk = "";  // content of the chunk before the run
  std::vector<std::string> defines = {};
};

struct ScannerRun {
  ObjectBranch* root;
  std::string answer;
  std::string printed;
};

// The root is numbered 0 and the allocation count starts at 0.
inline ScannerRun runScanner(const ScannerRequest& request) {
  currentIndex = 0;
  objectCount = 0;
  chunk = request.chunk;
  ScannerRun run{addNode(nullptr, kBranchNone, "", "", ""), "", ""};
  run.printed = stdoutOf([&] {
    run.answer = TreeBuilderJS(request.path, request.namespaceName, request.className, request.text,
                               request.isJavaScript, run.root, request.defines)
                     .str();
  });
  return run;
}

}  // namespace support
