// Compares the page parser, which remembers closing script tags and which elements have a text,
// with the reference implementation, which searches again each time.
#include "html/html_structure.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "reference/plain_page.h"
#include "support/capture.h"
#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "support/many_texts.h"
#include "support/page_run.h"
#include "support/same_tree.h"
#include "tree/object_branch.h"

namespace {

using Pieces = std::span<const std::string_view>;

// Parses each text both ways and counts what the texts contained.
class Comparison {
 public:
  void operator()(const std::string& text) {
    ObjectBranch* plain = newTop();
    strayTags_ += reference::parsePage(text, plain, "a.html", 5);
    ObjectBranch* fast = newTop();
    ParseHTMLStructure(text, fast, "a.html", 5);
    ASSERT_EQ(support::treeDifference(fast, plain), "") << testing::PrintToString(text);
    const std::string dump = support::dumpTree(plain);
    scripts_ += dump.find("class\"script") != std::string::npos ? 1 : 0;
    links_ += dump.find("link\"href: ") != std::string::npos ? 1 : 0;
    texts_ += plain->contents != "Top" ? 1 : 0;
    support::destroyTree(plain);
    support::destroyTree(fast);
  }

  int strayTags() const { return strayTags_; }
  int scripts() const { return scripts_; }
  int links() const { return links_; }
  int texts() const { return texts_; }

 private:
  // Numbered from 1, since a node numbered 0 is never destroyed.
  static ObjectBranch* newTop() {
    currentIndex = 1;
    return support::addNode(nullptr, kBranchClass, "class", "Top", "a.html");
  }

  int strayTags_ = 0;
  int scripts_ = 0;  // pages with an inline script
  int links_ = 0;    // pages with a link
  int texts_ = 0;    // pages with a text outside all elements
};

// Compares random texts, each preceded by before.
void compareRandomTexts(Pieces pieces, std::size_t count, int texts, const std::string& before,
                        Comparison& compare) {
  support::forRandomTexts(pieces, count, texts,
                          [&](const std::string& text) { compare(before + text); });
}

// Runs the texts and checks the number of warnings on standard error.
template <typename Run>
Comparison compared(Run run) {
  Comparison comparison;
  const std::string errors = support::stderrOf([&] { run(comparison); });
  EXPECT_TRUE(errors == support::strayTagWarnings(comparison.strayTags()))
      << errors.size() << " bytes for " << comparison.strayTags() << " closing tags";
  return comparison;
}

constexpr std::string_view kShortPieces[] = {"<", ">", "/", "x", "\n", "<script>", "</script>"};

TEST(PagePlainReading, OfShortTexts) {
  const Comparison result = compared([](Comparison& compare) {
    const auto visit = [&compare](const std::string& text) { compare(text); };
    support::forEachText(kShortPieces, 6, "", visit);
    support::forEachText(kShortPieces, 5, "<x><script>y", visit);
    support::forEachText("<>/a\n ", 7, visit);
  });
  if (support::kSlowBuild) return;
  EXPECT_GT(result.scripts(), 1000);
  EXPECT_GT(result.texts(), 1000);
  EXPECT_GT(result.strayTags(), 1000);
}

constexpr std::string_view kPagePieces[] = {
    "<",         ">",      "</",     "/>",       "/",      "<script>", "</script>", "<script ",
    "script",    "src=",   "href=",  "\"",       "'",      " ",        "\n",        "br",
    "a",         "{",      "}",      "!--",      "-->",    "!DOCTYPE", "?",         ": \"",
    "id=",       "class=", "action", "form",     "link",   "<a>",      "</a>",      "<p ",
    "<a href=x", "\r",     "\f",     "</SCRIPT", "\xC3",   "meta",     "href ",     "if (x) {\n",
    "y = 1;\n",  "src ",   "\t",     "id=': ",   "\"'>\n", "text"};

TEST(PagePlainReading, OfRandomTexts) {
  const Comparison result = compared(
      [](Comparison& compare) { compareRandomTexts(kPagePieces, 60, 60'000, "", compare); });
  if (support::kSlowBuild) return;
  EXPECT_GT(result.scripts(), 1000);
  EXPECT_GT(result.links(), 1000);
  EXPECT_GT(result.texts(), 1000);
  EXPECT_GT(result.strayTags(), 1000);
}

TEST(PagePlainReading, OfTagsAndTextsAroundTheirLimits) {
  const std::string spaces(4'998, ' ');
  const std::string letters(4'997, 'z');
  const std::string lines(2'500, '\n');
  const std::string_view pieces[] = {"<",         ">",    "/",    "a",     " ",     "\"",
                                     "\n",        "src=", spaces, "id=\"", letters, "<script>",
                                     "</script>", lines,  "<b",   "</",    spaces,  letters};
  const Comparison result = compared([&](Comparison& compare) {
    compareRandomTexts(pieces, 14, 1'500, "<p>", compare);
    compareRandomTexts(pieces, 14, 1'500, "<p id=\"", compare);
  });
  if (support::kSlowBuild) return;
  EXPECT_GT(result.scripts(), 30);
}

TEST(PagePlainReading, OfElementsAroundTheirLimit) {
  constexpr std::string_view kPieces[] = {
      "<a>", "<a>", "</a>", "x", "<br>", "<a/>", "\n", "<a id=': \"'>", "<script></script>"};
  for (int depth = 995; depth <= 1'000; ++depth) {
    std::string before;
    for (int i = 0; i < depth; ++i) before += "<a>";
    compared([&](Comparison& compare) { compareRandomTexts(kPieces, 30, 20, before, compare); });
  }
}

}  // namespace
