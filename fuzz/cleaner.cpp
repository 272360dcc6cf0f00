// The passes from raw to cleaned text, one by one and all in order, compared with the reference
// implementation. The first byte picks the known defines; the rest is the text.
#include "cleaner/cleaner.h"

#include <array>
#include <string>
#include <vector>

#include "harness.h"
#include "reference/plain_cleaner.h"
#include "targets.h"

namespace fuzz {
namespace {

using Names = std::vector<std::string>;

void testComments(const std::string& text) {
  require(Cleaner().RemoveHTMLComments(text) == reference::removeHtmlComments(text),
          "page comments go by their rules");
  const std::string stripped = reference::stripComments(text);
  require(Cleaner().UncommentAndUnquoteText(text) == stripped, "script comments go by their rules");
  require(Cleaner().UncommentAndUnquoteText(text, true) == stripped, "strings stay either way");
}

// Runs a pass that handles directives and appends to defines. Returns its text.
template <typename Pass>
void testPass(const reference::Simulated& plain, Names defines, Pass pass) {
  std::string text;
  const Printed printed = printedBy([&] { text = pass(defines); });
  require(text == plain.text, "text goes by the rules");
  require(defines == plain.defines, "the names that directives mention");
  require(printed == Printed{plain.report, ""}, "only long directives are reported");
}

void testOneDirective(const std::string& line, const Names& known) {
  Names parts;
  Cleaner().CleanerPartsList(line, parts);
  require(parts == reference::directiveParts(line), "the parts of a directive");
  for (const int above : {-1, 0, 1}) {
    require(Cleaner().GetPreProcessorDirectiveActiveState(line, above, known) ==
                reference::opensLiveBranch(line, above, known),
            "whether a directive opens a live branch");
  }
}

}  // namespace

void testCleaner(std::string_view input) {
  if (input.empty()) return;
  const std::array<Names, 3> choices{Names{}, Names{"DEBUG"}, Names{"A", "1", "(B)"}};
  const auto picked = static_cast<unsigned char>(input.front());
  const Names& known = choices[picked % choices.size()];
  const Names& defines = choices[picked / choices.size() % choices.size()];
  const std::string text(input.substr(1));

  testPass(reference::cleanText(text, known, defines), defines,
           [&](Names& found) { return Cleaner().CleanText(text, known, found); });
  // Each pass is also a function of its own and must accept any bytes.
  testComments(text);
  testPass(reference::simulatePreprocessor(text, known, defines), defines,
           [&](Names& found) { return Cleaner().PreProcessorSimulation(text, known, found); });
  testOneDirective(text, known);
}

}  // namespace fuzz
