// Compares the tree builder with the reference implementation, with arguments that ParseJS does not
// use: names that leave wrappers out, text that is not a script, and a chunk that is not empty.
#include "builder/tree_builder.h"

#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "reference/plain_run.h"
#include "reference/plain_tree.h"
#include "support/capture.h"
#include "support/heap.h"
#include "support/many_texts.h"
#include "support/page_run.h"
#include "tree/object_branch.h"

namespace {

// clang-format off
constexpr std::string_view kPieces[] = {
    "\n", "\n", " ", ";", "{", "}", "(", ")", "[", "]", "[1];", "'", "\\\n", "=", "=>", "a", ",",
    "x = 1;\n", "(function() {", "(a, b) => {", "export ", "import ", "module.exports", "require(",
    "class A {\n", "function f() {\n", "if (x) {\n", "};\n", "});\n", "return x;\n", "<p>", "</p>",
    "<script>", "</script>", "text", "const a = require;", "a { b; c } d;"};
// clang-format on
constexpr const char* kPaths[] = {"a.txt", "script/b",  "c.html.bak", "d.class.JS",
                                  "e.js",  "f.g.xhtml", ";",          "dir/class.md"};
constexpr const char* kNames[] = {"", "", "N"};
constexpr const char* kChunks[] = {"", "", " ", ")", "a\\", "class "};

TEST(TreeBuilderPlainReading, OfAllArguments) {
  std::mt19937 random(20240309);
  std::string first;
  std::string plainPrinted;
  std::string printed;
  int strayTags = 0;
  const std::string errors = support::stderrOf([&] {
    printed = support::stdoutOf([&] {
      for (int i = support::textCount(60'000); i > 0 && first.empty(); --i) {
        const support::NodeSweep sweep;
        const reference::Request request{kPaths[random() % std::size(kPaths)],
                                         kNames[random() % std::size(kNames)],
                                         kNames[random() % std::size(kNames)],
                                         support::randomText(kPieces, 30, random),
                                         random() % 3 != 0,
                                         {random() % 2 == 0 ? "" : "A B"}};
        const std::string before = kChunks[random() % std::size(kChunks)];
        currentIndex = 0;
        chunk = before;
        const std::string answer =
            TreeBuilderJS(request.filePath, request.namespaceName, request.className, request.text,
                          request.isJavaScript, reference::newNode(), request.defines)
                .str();
        currentIndex = 0;
        std::string plainChunk = before;
        const reference::Run plain =
            reference::buildTree(request, reference::newNode(), plainChunk);
        plainPrinted += plain.printed;
        strayTags += plain.strayTags;
        if (answer != plain.answer || chunk != plainChunk)
          first = request.filePath + " with " + testing::PrintToString(request.text) + ": " +
                  answer + "chunk " + chunk + " and\n" + plain.answer + "chunk " + plainChunk;
      }
    });
  });
  EXPECT_EQ(first, "");
  EXPECT_TRUE(printed == plainPrinted);
  EXPECT_TRUE(errors == support::strayTagWarnings(strayTags));
}

}  // namespace
