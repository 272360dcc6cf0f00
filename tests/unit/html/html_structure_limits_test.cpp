// The limits of the page parser: bytes of a page, a tag, a text and an inline script, and open
// elements. Anything over a limit is cut or dropped silently.
#include "html/html_structure.h"

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/page_run.h"
#include "tree/object_branch.h"

namespace {

using support::pageRunOf;
using support::strayTagWarnings;

constexpr std::size_t kMaxPageBytes = 52'428'800;
constexpr std::size_t kMaxTagBytes = 10'000;
constexpr std::size_t kMaxTextBytes = 10'000;
constexpr std::size_t kMaxScriptBytes = 1'048'576;
constexpr int kMaxOpenElements = 1'000;  // the root is the first

std::string blanks(std::size_t count) { return std::string(count, ' '); }

// That many bytes of page without any node.
std::string emptyPage(std::size_t bytes) { return "<!--" + blanks(bytes - 5) + ">"; }

// A page in which byte number mark of tail is the first that is ignored.
std::string pageToLimit(const std::string& tail, std::size_t mark) {
  return emptyPage(kMaxPageBytes - mark) + tail;
}

TEST(PageLimits, ATagMayEndOnTheLastByteOfThePage) {
  EXPECT_EQ(pageRunOf(pageToLimit("<a>", 3)).nodes(), "htmlelement\"a\"@0");
  EXPECT_EQ(pageRunOf(pageToLimit("<a><b>", 3)).nodes(), "htmlelement\"a\"@0");
  EXPECT_EQ(pageRunOf(pageToLimit("<a><b><i>", 6)).nodes(),
            "htmlelement\"a\"@0(htmlelement\"b\"@0)");
}

TEST(PageLimits, ATagThatEndsAfterThePageIsIgnored) {
  EXPECT_EQ(pageRunOf(pageToLimit("<a>", 2)).nodes(), "");
  EXPECT_EQ(pageRunOf(pageToLimit("<a>", 1)).nodes(), "");
  EXPECT_EQ(pageRunOf(pageToLimit("<a>", 0)).nodes(), "");
  EXPECT_EQ(pageRunOf(pageToLimit("<a><b>", 5)).nodes(), "htmlelement\"a\"@0");
}

TEST(PageLimits, TextNeedsATagThatBeginsInThePage) {
  EXPECT_EQ(pageRunOf(pageToLimit("text<a>", 5)).top->contents, "HTMLDocument: \"text\"");
  EXPECT_EQ(pageRunOf(pageToLimit("text<a>", 4)).top->contents, "HTMLDocument");
}

TEST(PageLimits, AClosingTagMustEndInThePage) {
  EXPECT_EQ(pageRunOf(pageToLimit("</a></b>", 4)).errors, strayTagWarnings(1));
  EXPECT_EQ(pageRunOf(pageToLimit("</a></b>", 7)).errors, strayTagWarnings(1));
  EXPECT_EQ(pageRunOf(pageToLimit("</a></b>", 3)).errors, "");
}

TEST(PageLimits, AScriptNeedsAClosingTagThatBeginsInThePage) {
  const std::string script = "<script>x();<b>";
  for (std::size_t inside = 1; inside <= 10; ++inside) {
    EXPECT_EQ(pageRunOf(pageToLimit(script + "</script><i>", script.size() + inside)).nodes(),
              "htmlelement\"script\"@0(class\"script\"@1(line\"x();<b>\"@1))")
        << inside << " bytes of the closing tag lie before the limit";
  }
  EXPECT_EQ(pageRunOf(pageToLimit(script + "</script><i>", script.size())).nodes(),
            "htmlelement\"script: \"x();\"\"@0(htmlelement\"b\"@0)");
}

std::string tagOf(const std::string& head, const std::string& tail, std::size_t bytes) {
  return "<" + head + blanks(bytes - head.size() - tail.size()) + tail + ">";
}

TEST(PageLimits, ATagOfTenThousandBytesIsReadWhole) {
  const std::string name(kMaxTagBytes, 'x');
  EXPECT_EQ(pageRunOf("<" + name + "><b>").nodes(),
            "htmlelement\"" + name + "\"@0(htmlelement\"b\"@0)");
  EXPECT_EQ(pageRunOf(tagOf("a", "href=\"u\"", kMaxTagBytes)).nodes(),
            "htmlelement\"a\"@0(link\"href: u\"@0)");
  EXPECT_EQ(pageRunOf(tagOf("a", "src=\"u\"", kMaxTagBytes)).nodes(),
            "htmlelement\"a\"@0(link\"src: u\"@0)");
  EXPECT_EQ(pageRunOf(tagOf("a", "id=\"m\"", kMaxTagBytes)).nodes(), "htmlelement\"a#m\"@0");
  EXPECT_EQ(pageRunOf(tagOf("a", "/", kMaxTagBytes) + "<b>").nodes(),
            "htmlelement\"a\"@0 htmlelement\"b\"@0");
}

TEST(PageLimits, ALongerTagIsCutAndSkippedToItsEnd) {
  const std::string name(kMaxTagBytes, 'x');
  EXPECT_EQ(pageRunOf("<" + name + "yz><b>").nodes(),
            "htmlelement\"" + name + "\"@0(htmlelement\"b\"@0)");
  EXPECT_EQ(pageRunOf(tagOf("a", "href=\"u\"", kMaxTagBytes + 1)).nodes(), "htmlelement\"a\"@0");
  EXPECT_EQ(pageRunOf(tagOf("a", "src=uv", kMaxTagBytes + 1)).nodes(),
            "htmlelement\"a\"@0(link\"src: u\"@0)");
  EXPECT_EQ(pageRunOf(tagOf("a", "id=\"m\"", kMaxTagBytes + 1)).nodes(), "htmlelement\"a\"@0");
  EXPECT_EQ(pageRunOf(tagOf("a", "/", kMaxTagBytes + 1) + "<b>").nodes(),
            "htmlelement\"a\"@0(htmlelement\"b\"@0)")
      << "the slash is cut off, so the element is open";
  EXPECT_EQ(pageRunOf(tagOf("a", "/y", kMaxTagBytes + 1) + "<b>").nodes(),
            "htmlelement\"a\"@0 htmlelement\"b\"@0")
      << "the byte after the slash is cut off, so the element is void";
  EXPECT_EQ(pageRunOf("<a>" + tagOf("/", "x", 3 * kMaxTagBytes) + "<b>").nodes(),
            "htmlelement\"a\"@0 htmlelement\"b\"@0");
}

TEST(PageLimits, AScriptTagIsCutBeforeTheSearchForItsSrc) {
  const std::string text = "x();</script>";
  EXPECT_EQ(pageRunOf(tagOf("script", "src=", kMaxTagBytes) + text).nodes(),
            "htmlelement\"script[src]: \"x();\"\"@0");
  EXPECT_EQ(pageRunOf(tagOf("script", "src=", kMaxTagBytes + 1) + text).nodes(),
            "htmlelement\"script\"@0(class\"script" + blanks(kMaxTagBytes - 9) +
                "src\"@1(line\"x();\"@1))");
}

TEST(PageLimits, TenThousandBytesOfATextAreRead) {
  EXPECT_EQ(pageRunOf("<p>" + blanks(kMaxTextBytes - 1) + "x<b>").nodes(),
            "htmlelement\"p: \"x\"\"@0(htmlelement\"b\"@0)");
  EXPECT_EQ(pageRunOf("<p>a" + blanks(kMaxTextBytes - 2) + "xy<b>").nodes(),
            "htmlelement\"p: \"a x\"\"@0(htmlelement\"b\"@0)");
  EXPECT_EQ(pageRunOf("<p>a" + blanks(kMaxTextBytes - 1) + "x<b>").nodes(),
            "htmlelement\"p: \"a\"\"@0(htmlelement\"b\"@0)");
}

TEST(PageLimits, TextAfterThemIsIgnored) {
  EXPECT_EQ(pageRunOf("<p>" + blanks(kMaxTextBytes) + "x<b>").nodes(),
            "htmlelement\"p\"@0(htmlelement\"b\"@0)");
  EXPECT_EQ(pageRunOf("<p>" + blanks(kMaxTextBytes) + "x<b></b>late</p>").nodes(),
            "htmlelement\"p: \"late\"\"@0(htmlelement\"b\"@0)")
      << "a blank text leaves room for a later one";
}

TEST(PageLimits, TextIsCountedAfterItsLeadingLineFeeds) {
  const std::string lines(3, '\n');
  EXPECT_EQ(pageRunOf("<p>" + lines + blanks(kMaxTextBytes - 1) + "x<b>").nodes(),
            "htmlelement\"p: \"x\"\"@0(htmlelement\"b\"@3)");
  EXPECT_EQ(pageRunOf("<p>" + lines + blanks(kMaxTextBytes) + "x<b>").nodes(),
            "htmlelement\"p\"@0(htmlelement\"b\"@3)");
  EXPECT_EQ(pageRunOf("<p> " + std::string(kMaxTextBytes - 2, '\n') + "x<b>").nodes(),
            "htmlelement\"p: \"x\"\"@0(htmlelement\"b\"@9998)")
      << "line feeds after its first byte count";
  EXPECT_EQ(pageRunOf("<p> " + std::string(kMaxTextBytes - 1, '\n') + "x<b>").nodes(),
            "htmlelement\"p\"@0(htmlelement\"b\"@9999)");
}

TEST(PageLimits, TheLinesOfALongTextAreAllCounted) {
  EXPECT_EQ(pageRunOf("<p>" + blanks(3 * kMaxTextBytes) + "\n\n<b>").nodes(),
            "htmlelement\"p\"@0(htmlelement\"b\"@2)");
}

// That many bytes of blank lines of 1,024 bytes each.
std::string blankLines(std::size_t bytes) {
  std::string text;
  while (text.size() < bytes) text += blanks(1023) + "\n";
  return text.substr(0, bytes);
}

TEST(PageLimits, AScriptOfOneMebibyteIsReadWhole) {
  static_assert(kMaxScriptBytes == 1024 * 1024);
  EXPECT_EQ(pageRunOf("<script>" + blankLines(kMaxScriptBytes - 3) + "abc</script>").nodes(),
            "htmlelement\"script\"@0(class\"script\"@1(line\"abc\"@1024))");
}

TEST(PageLimits, ALongerScriptIsCutAndSkippedToItsEnd) {
  EXPECT_EQ(
      pageRunOf("<script>" + blankLines(kMaxScriptBytes - 3) + "abcde\nf\n</script><p>").nodes(),
      "htmlelement\"script\"@0(class\"script\"@1(line\"abc\"@1024)) htmlelement\"p\"@1025");
  EXPECT_EQ(pageRunOf("<script>" + blankLines(kMaxScriptBytes) + "a\n</script><p>").nodes(),
            "htmlelement\"script\"@0(class\"script\"@1) htmlelement\"p\"@1025")
      << "what is left of it is blank";
}

std::string repeat(const std::string& piece, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

const ObjectBranch* innermost(const ObjectBranch* node, int depth) {
  for (int i = 0; i < depth && node != nullptr; ++i)
    node = node->children.size() == 1 ? node->children[0] : nullptr;
  return node;
}

TEST(PageLimits, AnElementOverTheLimitTakesNoChildren) {
  const std::string open = repeat("<a>", kMaxOpenElements - 2);
  const support::PageRun run = pageRunOf(open + "<b><i>one<u>two</u>three</b><s>");
  const ObjectBranch* last = innermost(run.top, kMaxOpenElements - 3);
  ASSERT_NE(last, nullptr);
  // b is the last element pushed. i and u are inside it, but take neither text nor children: "</u>"
  // closes b, and "</b>" the a around it.
  EXPECT_EQ(support::dumpTree(last),
            "htmlelement\"a\"@0(htmlelement\"a: \"three\"\"@0(htmlelement\"b: \"one\"\"@0("
            "htmlelement\"i\"@0 htmlelement\"u\"@0)) htmlelement\"s\"@0)");
}

TEST(PageLimits, AScriptOverTheElementLimitIsStillParsed) {
  const support::PageRun run =
      pageRunOf(repeat("<a>", kMaxOpenElements - 1) + "<script src=u><script>x();</script><b>");
  const ObjectBranch* last = innermost(run.top, kMaxOpenElements - 1);
  ASSERT_NE(last, nullptr);
  EXPECT_EQ(support::dumpTree(last),
            "htmlelement\"a\"@0(htmlelement\"script[src]\"@0(link\"src: u\"@0) "
            "htmlelement\"script\"@0(class\"script\"@1(line\"x();\"@1)) htmlelement\"b\"@0)");
}

TEST(PageLimits, ClosingTagsOverTheLimitPopOpenElements) {
  const int tooMany = 5;
  const std::string text = repeat("<a>", kMaxOpenElements - 1 + tooMany);
  EXPECT_EQ(pageRunOf(text + repeat("</a>", kMaxOpenElements - 1)).errors, "");
  EXPECT_EQ(pageRunOf(text + repeat("</a>", kMaxOpenElements - 1 + tooMany)).errors,
            strayTagWarnings(tooMany));
}

TEST(PageLimits, CuttingIsSilent) {
  const std::string text = tagOf("a", "x", kMaxTagBytes + 1) + blanks(kMaxTextBytes + 1) +
                           "<script>" + blankLines(kMaxScriptBytes + 1) + "</script>" +
                           repeat("<a>", kMaxOpenElements + 1);
  std::string errors;
  const std::string output = support::stdoutOf([&] { errors = pageRunOf(text).errors; });
  EXPECT_EQ(output, "");
  EXPECT_EQ(errors, "");
}

}  // namespace
