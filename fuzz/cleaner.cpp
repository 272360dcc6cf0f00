// The passes from raw text to the text that is read. The first byte picks the names that conditions
// know; all behind it is the text.
#include "cleaner/cleaner.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "harness.h"
#include "targets.h"

namespace fuzz {
namespace {

using Names = std::vector<std::string>;

std::ptrdiff_t linesOf(std::string_view text) { return std::count(text.begin(), text.end(), '\n'); }

// The pass has no function of its own.
std::string withoutTabs(std::string text) {
  std::replace(text.begin(), text.end(), '\t', ' ');
  std::replace(text.begin(), text.end(), '\r', '\n');
  return text;
}

void requireNoLonger(std::string_view after, std::string_view before) {
  require(after.size() <= before.size(), "no pass makes a text longer");
}

std::string testPageComments(const std::string& text) {
  const std::string after = Cleaner().RemoveHTMLComments(text);
  requireNoLonger(after, text);
  require(linesOf(after) == linesOf(text), "line feeds of page comments stay");
  require(text.find("<!--") != std::string::npos || after == text, "only comments go");
  return after;
}

std::string testScriptComments(const std::string& text) {
  const std::string after = Cleaner().UncommentAndUnquoteText(text);
  requireNoLonger(after, text);
  require(Cleaner().UncommentAndUnquoteText(text, true) == after, "strings stay either way");
  // Only what stands from the marker to the next ";" loses its line feeds.
  require(linesOf(after) == linesOf(text) ||
              (text.find("TTTTT") != std::string::npos && linesOf(after) < linesOf(text)),
          "line feeds of script comments stay");
  require(std::all_of(after.begin(), after.end(),
                      [](char byte) {
                        return (byte >= ' ' && byte <= '~') || byte == '\n' || byte == '\r';
                      }),
          "what is not printable becomes a space");
  return after;
}

// defines receives the names that the directives mention.
std::string testDirectives(const std::string& text, const Names& known, Names& defines) {
  const Names before = defines;
  std::string after;
  const Printed printed =
      printedBy([&] { after = Cleaner().PreProcessorSimulation(text, known, defines); });
  requireNoLonger(after, text);
  require(linesOf(after) == linesOf(text), "line feeds of directives stay");
  require(
      std::none_of(after.begin(), after.end(),
                   [](char byte) { return byte != '\n' && static_cast<signed char>(byte) < ' '; }),
      "bytes that are no text are dropped");
  require(printed.err.empty() && (printed.out.empty() || printed.out.starts_with("[[")),
          "only long directives are reported");

  require(
      defines.size() >= before.size() && std::equal(before.begin(), before.end(), defines.begin()),
      "names are added behind those that are there");
  for (std::size_t i = before.size(); i < defines.size(); ++i) {
    const auto self = defines.begin() + static_cast<std::ptrdiff_t>(i);
    require(std::find(defines.begin(), self, *self) == self, "a name is added once");
  }
  return after;
}

void testOneDirective(const std::string& line, const Names& known) {
  Names parts;
  Cleaner().CleanerPartsList(line, parts);
  require(parts.size() <= 2, "a directive has a keyword and an argument");
  require(!Cleaner().GetPreProcessorDirectiveActiveState(line, -1, known),
          "without a level above nothing is live");
  const bool live = Cleaner().GetPreProcessorDirectiveActiveState(line, 0, known);
  require(!live || parts[0].starts_with('#'), "only a directive opens a branch");
}

}  // namespace

void testCleaner(std::string_view input) {
  if (input.empty()) return;
  const std::array<Names, 3> choices{Names{}, Names{"DEBUG"}, Names{"A", "1", "(B)"}};
  const auto picked = static_cast<unsigned char>(input.front());
  const Names& known = choices[picked % choices.size()];
  const std::string text(input.substr(1));

  Names defines = choices[picked / choices.size() % choices.size()];
  Names definesOfAll = defines;
  const std::string afterPage = testPageComments(text);
  const std::string afterScript = testScriptComments(withoutTabs(afterPage));
  const std::string after = testDirectives(afterScript, known, defines);

  std::string cleaned;
  printedBy([&] { cleaned = Cleaner().CleanText(text, known, definesOfAll); });
  require(cleaned == after && definesOfAll == defines, "cleaning is its passes in their order");

  // Each pass is a function of its own too, and has to stand any bytes.
  testScriptComments(text);
  testDirectives(text, known, defines);
  testOneDirective(text, known);
}

}  // namespace fuzz
