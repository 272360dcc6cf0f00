// Runs one file: picks one of three routes by the file's extension, builds the tree under the root,
// runs the refinement passes in the route's order and returns the records.
#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/export.h"
#include "records/record_text.h"
#include "tree/object_branch.h"

// The statement text under construction on the scanner route; keeps what a run leaves in it.
extern QUORL_API std::string chunk;

// Builds the tree of text under root, which the caller has numbered, and returns a stream that
// holds the record array, or an error text if root is null. Empty namespaceName and className
// request the wrapper nodes of the scanner route.
QUORL_API std::ostringstream TreeBuilderJS(std::string filePath, std::string namespaceName,
                                           std::string className, std::string text,
                                           bool isJavaScript, ObjectBranch* root,
                                           std::vector<std::string> defines);

namespace builder {

struct BuildRequest {
  const std::string& filePath;
  std::string_view namespaceName;
  std::string_view className;
  std::string_view text;  // cleaned
  bool isJavaScript;
  const std::vector<std::string>& defines;
  std::string& chunk;  // the scanner's statement text
};

// TreeBuilderJS without the stream: appends the record text, or an error text, to out.
records::RecordText buildRecords(const BuildRequest& request, ObjectBranch* root,
                                 records::RecordText out = {});

}  // namespace builder
