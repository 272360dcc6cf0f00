// Compares the passes, which work in place and move runs of bytes, with the reference
// implementation.
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "cleaner/cleaner.h"
#include "reference/plain_cleaner.h"
#include "support/capture.h"
#include "support/many_texts.h"
#include "support/names.h"

namespace {

using std::string_view_literals::operator""sv;
using support::forEachText;
using support::forRandomTexts;

void expectPlainPageComments(const std::string& text) {
  ASSERT_EQ(Cleaner().RemoveHTMLComments(text), reference::removeHtmlComments(text))
      << testing::PrintToString(text);
}

void expectPlainStripping(const std::string& text) {
  ASSERT_EQ(Cleaner().UncommentAndUnquoteText(text), reference::stripComments(text))
      << testing::PrintToString(text);
}

constexpr std::string_view kPageBytes[] = {"<", "!", "-", ">", "\n", "a"};
constexpr std::string_view kPagePieces[] = {"<!--", "-->",   "<",    "!",   "--", "-",
                                            ">",    "\n",    "\r",   "a",   "//", "\0"sv,
                                            " ",    "<!-->", "--!>", "<!-", "->", "\xE9"};

TEST(CleanerPlainReading, PageComments) {
  forEachText(kPageBytes, 7, "<!--", expectPlainPageComments);
  forEachText(kPageBytes, 8, "", expectPlainPageComments);
  forRandomTexts(kPagePieces, 40, 500'000, expectPlainPageComments);
}

TEST(CleanerPlainReading, ShortTextsInLongRuns) {
  support::forEachTextInARun("<!->\n", 4, 'a', expectPlainPageComments);
  support::forEachTextInARun("/*'\\;[\n\xE9", 4, 'a', expectPlainStripping);
  support::forEachTextInARun("/*\"T }\x7F", 3, ' ', expectPlainStripping);
  support::forEachTextInARun("T;d", 3, 'T', expectPlainStripping);
}

TEST(CleanerPlainReading, CommentStrippingOfAllShortTexts) {
  forEachText("/*'\\;[\nx", 7, expectPlainStripping);
  forEachText("/*\"' \xE9[", 7, expectPlainStripping);
  forEachText("T;d[", 9, expectPlainStripping);
}

constexpr std::string_view kMarkerPieces[] = {"TTTTT", "d", "T", ";", "\n", "/*", "'", "["};

TEST(CleanerPlainReading, CommentStrippingOfAllShortTextsWithMarkers) {
  forEachText(kMarkerPieces, 6, "", expectPlainStripping);
}

constexpr std::string_view kScriptPieces[] = {"                                  ",
                                              "averylongwordwithoutanyotherbytesinit",
                                              "/",
                                              "*",
                                              "\n",
                                              "'",
                                              "\"",
                                              "\\",
                                              "[",
                                              "]",
                                              ";",
                                              "T",
                                              "TTTTT",
                                              "d",
                                              " ",
                                              "x",
                                              "}",
                                              "{",
                                              "\r",
                                              "//",
                                              "/*",
                                              "*/",
                                              "\xE9",
                                              "\0"sv,
                                              "\x7F",
                                              "abc",
                                              "`",
                                              ")",
                                              ";[",
                                              "\f",
                                              "/**/",
                                              "\\'",
                                              "http://",
                                              "return ",
                                              "TTTTTT;",
                                              "/x/g"};

TEST(CleanerPlainReading, CommentStrippingOfRandomTexts) {
  forRandomTexts(kScriptPieces, 40, 1'000'000, expectPlainStripping);
  forRandomTexts(kMarkerPieces, 12, 500'000, expectPlainStripping);
}

// Keeps the first text whose simulation differs, escaped. Assertions come later, since the pass
// writes its report to the standard output that a failure would also use.
class SimulationDifference {
 public:
  explicit SimulationDifference(std::vector<std::string_view> known) : known_(std::move(known)) {}

  void operator()(const std::string& text) {
    for (const std::string_view known : known_) {
      const std::vector<std::string> names = support::names(known);
      const reference::Simulated plain = reference::simulatePreprocessor(text, names, {"D"});
      std::vector<std::string> defines{"D"};
      const std::string result = Cleaner().PreProcessorSimulation(text, names, defines);
      plainReport_ += plain.report;
      const bool same = result == plain.text && defines == plain.defines;
      if (!same && first_.empty())
        first_ = testing::PrintToString(text) + " with " + std::string(known) + " gives " +
                 testing::PrintToString(result) + ", not " + testing::PrintToString(plain.text);
    }
  }
  const std::string& first() const { return first_; }
  const std::string& plainReport() const { return plainReport_; }

 private:
  std::vector<std::string_view> known_;
  std::string first_;
  std::string plainReport_;
};

// Runs the texts and expects no difference, including the report.
template <typename Run>
std::string expectPlainSimulation(std::vector<std::string_view> known, Run run) {
  SimulationDifference difference(std::move(known));
  std::string report = support::stdoutOf([&] { run(difference); });
  EXPECT_EQ(difference.first(), "");
  EXPECT_TRUE(report == difference.plainReport());
  return report;
}

TEST(CleanerPlainReading, DirectivesOfAllShortTexts) {
  expectPlainSimulation({""}, [](SimulationDifference& difference) {
    forEachText("# \n\\a(\t", 8, [&](const std::string& text) { difference(text); });
    forEachText("# \n\\a\xE9", 6, [&](const std::string& text) { difference(text); });
    for (const char filler : {'a', ' ', '#', '\n'})
      support::forEachTextInARun("# \na\t\xE9", 3, filler,
                                 [&](const std::string& text) { difference(text); });
  });
}

constexpr std::string_view kConditionPieces[] = {"#ifdef A\n", "#ifndef A\n", "#elif B\n",
                                                 "#else\n",    "#endif\n",    "x\n"};

TEST(CleanerPlainReading, ConditionsOfAllShortTexts) {
  expectPlainSimulation({"", "A", "B"}, [](SimulationDifference& difference) {
    forEachText(kConditionPieces, 7, "", [&](const std::string& text) { difference(text); });
  });
}

// clang-format off
constexpr std::string_view kDirectivePieces[] = {
    "#if A\n", "#ifdef B\n", "#ifndef C\n", "#elif C\n", "#elif A\n", "#else\n", "#endif\n",
    "#ifndef D", "x\n", "  y\n", "  \n", "\n", " ", "1 #endif\n", "z #if A\n", "#include <a>\n",
    "#define A \\\n", "\\\n", "#", "1(", "\t", "\xE9", "q", "                    ", "#if(A)\n",
    "# ifdef  B \n", "#if defined(A)\n", "#elif\n", "#ifdef\n", "\\  \n", "\0"sv};
// clang-format on

TEST(CleanerPlainReading, DirectivesOfRandomTexts) {
  const std::string report =
      expectPlainSimulation({"", "A", "B,C"}, [](SimulationDifference& difference) {
        const auto compare = [&](const std::string& text) { difference(text); };
        forRandomTexts(kConditionPieces, 30, 30'000, compare);
        forRandomTexts(kDirectivePieces, 30, 100'000, compare);
      });
  EXPECT_NE(report, "") << "no text was long enough to be reported";
}

void expectPlainDirective(const std::string& line) {
  std::vector<std::string> parts;
  Cleaner().CleanerPartsList(line, parts);
  ASSERT_EQ(parts, reference::directiveParts(line)) << testing::PrintToString(line);
}

void expectPlainLiveBranch(const std::string& line) {
  for (const int previousState : {-1, 0, 1, 2}) {
    for (const std::string_view known : {"", "A", "B,A"}) {
      const std::vector<std::string> names = support::names(known);
      ASSERT_EQ(Cleaner().GetPreProcessorDirectiveActiveState(line, previousState, names),
                reference::opensLiveBranch(line, previousState, names))
          << testing::PrintToString(line) << " after " << previousState << " with " << known;
    }
  }
}

constexpr std::string_view kWordPieces[] = {
    "#", "if",  "ifdef", "ifndef",   "elif",    "else",  "include", "define", " ",
    "A", "(A)", "  ",    "1",        "#if",     "B",     "(",       ")",      "\\",
    "!", "\t",  "endif", "#ifdef A", "#elif A", "#else", "#include"};

TEST(CleanerPlainReading, DirectiveWords) {
  forEachText("#if( 1\t", 7, expectPlainDirective);
  forRandomTexts(kWordPieces, 10, 500'000, expectPlainDirective);
  forEachText(kWordPieces, 3, "", expectPlainLiveBranch);
}

constexpr std::string_view kFilePieces[] = {"                                  ",
                                            "averylongwordwithoutanyotherbytesinit",
                                            "<!--",
                                            "-->",
                                            "//",
                                            "/*",
                                            "*/",
                                            "'",
                                            "\"",
                                            "\\",
                                            "\r\n",
                                            "\n",
                                            "\n",
                                            "\t",
                                            "    ",
                                            " ",
                                            "#if A",
                                            "#else",
                                            "#endif",
                                            "#ifndef B",
                                            "x = 1;",
                                            "[a]",
                                            "TTTTT",
                                            "TTTTTx;",
                                            "\xC3\xA9",
                                            "<a>",
                                            "</a>",
                                            "\0"sv,
                                            "`",
                                            "{",
                                            "}",
                                            ";"};

TEST(CleanerPlainReading, AllPasses) {
  std::string first;
  std::string plainReport;
  const std::string report = support::stdoutOf([&] {
    forRandomTexts(kFilePieces, 60, 100'000, [&](const std::string& text) {
      const reference::Simulated plain = reference::cleanText(text, {}, {"A"});
      std::vector<std::string> defines{"A"};
      const std::string result = Cleaner().CleanText(text, {}, defines);
      plainReport += plain.report;
      if (first.empty() && (result != plain.text || defines != plain.defines))
        first = testing::PrintToString(text) + " gives " + testing::PrintToString(result) +
                ", not " + testing::PrintToString(plain.text);
    });
  });
  EXPECT_EQ(first, "");
  EXPECT_TRUE(report == plainReport);
  EXPECT_NE(report, "") << "no text was long enough to be reported";
}

}  // namespace
