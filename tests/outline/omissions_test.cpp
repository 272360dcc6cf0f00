#include "outline/omissions.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "outline_of.h"

namespace {

using host::outline::describe;
using host::outline::findOmissions;
using host::outline::Omission;
using host::outline::OmissionReason;

std::vector<Omission> omissionsOf(const std::string& name, std::string_view text) {
  return findOmissions(text, outlineOf(name, text).answer);
}

std::string described(const std::string& name, std::string_view text) {
  std::string lines;
  for (const Omission& each : omissionsOf(name, text)) lines += describe(each) + "\n";
  return lines;
}

TEST(Omissions, AreNoneInAHealthyFile) {
  EXPECT_EQ(described("a.js", "function f() {\n}\n"), "");
  EXPECT_EQ(described("a.html", "<p>x</p><script>\nf();\n</script>\n"), "");
  EXPECT_EQ(described("a.css", ".a {\n  color: red;\n}\n"), "");
  EXPECT_EQ(described("a.c", "int main(void) {\n  return 0;\n}\n"), "");
  EXPECT_EQ(described("a.md", "Some text\n"), "");
}

TEST(Omissions, CountLinesThatAreTooLong) {
  const std::string line(10'000, 'a');
  EXPECT_EQ(described("a.js", line + "\n"), "");
  EXPECT_EQ(described("a.js", "/*!*/\n" + line + "b\nc();\n"),
            "1 of 3 lines left out (10,001 of 10,013 bytes): longer than 10,000 bytes\n");
  EXPECT_EQ(described("a.js", "    " + line + "\n"), "") << "indentation does not count";
  EXPECT_EQ(described("a.js", line + "// comment\n"), "") << "nor does a comment";
  EXPECT_EQ(described("a.js", line + "b\r\n" + line + "cd\r\n"),
            "2 of 2 lines left out (20,003 of 20,007 bytes): longer than 10,000 bytes\n");
  EXPECT_EQ(described("a.html", "<p>\n<script>\n" + line + "b\n</script>\n"),
            "1 of 4 lines left out (10,001 of 10,025 bytes): longer than 10,000 bytes\n");
}

TEST(Omissions, CountLinesWithTooManyBraces) {
  std::string braces;
  for (int i = 0; i < 100; ++i) braces += "f(){}";
  EXPECT_EQ(described("a.js", braces + "\n"), "");
  EXPECT_EQ(described("a.js", braces + "{\n"),
            "1 of 1 line left out (501 of 502 bytes): more than 100 braces\n");
  EXPECT_EQ(described("a.js", braces + "'{'\n"), "");
}

TEST(Omissions, NameTheLimitOfLines) {
  const std::string lines(100'000, '\n');
  EXPECT_EQ(described("a.js", lines), "");
  EXPECT_EQ(
      described("a.js", lines + "f();\ng();"),
      "2 of 100,002 lines left out (8 of 100,009 bytes): behind the 100,000th line, from line "
      "100,001\n");
  std::string pairs;
  for (int i = 0; i < 50'000; ++i) pairs += "\r\n";
  EXPECT_EQ(described("a.js", pairs + "f();\r\n"),
            "1 of 50,001 lines left out (4 of 100,006 bytes): behind the 100,000th line, from line "
            "50,001\n")
      << "a carriage return is a line to the module";
}

TEST(Omissions, NameTheLimitOfOtherText) {
  std::string text(10'485'760 - 3, '\n');
  text += "a;\n";
  EXPECT_EQ(described("a.txt", text), "");
  const std::vector<Omission> found = omissionsOf("a.txt", "b;\n" + text + "c;\n");
  ASSERT_FALSE(found.empty());
  EXPECT_EQ(found[0].reason, OmissionReason::kSizeLimit);
}

TEST(Omissions, TellWhereReadingStoppedEarly) {
  EXPECT_EQ(described("a.txt", "one;\ntwo;\nit's three;\nfour;\nfive;\n"),
            "reading stopped early: last record on line 2 of 5\n");
}

}  // namespace
