#include "outline/omissions.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
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

TEST(Omissions, AreTheSameWhereTheyAreLookedForAhead) {
  const std::string longLine(10'001, 'a');
  const std::string page = "<p>\n<script>\n" + longLine + "\n</script>\n/*";
  for (const auto& [name, text] :
       {std::pair("a.js", longLine + "\n/*"), std::pair("a.html", page)}) {
    const std::string answer = outlineOf(name, text).answer;
    auto early = host::outline::findEarlyOmissions(text, name);
    ASSERT_TRUE(early);
    EXPECT_EQ(early->omissions.size(), 2U);
    const std::string expected = describe(findOmissions(text, answer));
    EXPECT_EQ(describe(findOmissions(text, answer, early)), expected);
    // Another route than the name's: what was found does not count.
    early->route = host::outline::Route::kOther;
    early->omissions.clear();
    EXPECT_EQ(describe(findOmissions(text, answer, early)), expected);
  }
  EXPECT_FALSE(host::outline::findEarlyOmissions("it's", "a.md"));
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

TEST(Omissions, NameACommentThatHasNoEnd) {
  EXPECT_EQ(described("a.js", "f();\nglob(`**/*.js`);\ng();\n"),
            "2 of 3 lines left out (20 of 27 bytes): in a comment that has no end, from line 2\n");
  EXPECT_EQ(described("a.js", "f();\nx = '<!--';\ng();"),
            "2 of 3 lines left out (15 of 21 bytes): in a comment that has no end, from line 2\n");
  EXPECT_EQ(described("a.html", "<p>x</p>\r\n<!-- a\r\n<p>y</p>\r\n"),
            "2 of 3 lines left out (14 of 28 bytes): in a comment that has no end, from line 2\n");
  EXPECT_EQ(described("a.js", "f();\n/* a\n*/\nglob('**/*.js');\n// /*\n"), "");
  EXPECT_EQ(described("a.js", "/* **/*.js */\nf();\n"), "");
}

TEST(Omissions, TellWhereReadingStoppedEarly) {
  struct Row {
    const char* what;
    const char* text;
    const char* described;
  };
  const std::vector<Row> rows = {
      {"an apostrophe", "one;\ntwo;\nit's three;\nfour;\nfive;\n", "last record on line 2 of 5"},
      {"one in the first line", "it's one;\ntwo;\n", "no line of 2 has a record"},
      {"a parenthesis", "one;\n\ntwo (three\nfour;\n", "last record on line 1 of 4"},
      {"a comment", "one;\ntwo **/*.c three\nfour;\n", "last record on line 2 of 3"},
      {"no end of the last line", "one;\nmany words", "last record on line 1 of 2"},
      {"line feeds in a string", "one;\ntwo 'a\nb' c\nthree;\nit's four\n",
       "last record on line 4 of 5"},
      {"a brace too many behind a new scope", "}}one;\n}}}\nmany words;\n",
       "last record on line 1 of 3"},
      {"too many closing braces", "one;\n}}\n}\nmany words;\n", "last record on line 1 of 4"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(described("a.txt", row.text),
              std::string("reading stopped early: ") + row.described + "\n")
        << row.what;
  }
}

TEST(Omissions, AreNoneWhereOtherTextIsReadToItsEnd) {
  const std::vector<std::string_view> texts = {
      "it's one;\nit's two;\n",           // two apostrophes make a string
      "\"it's\"\n'don\\'t'\none;\n",      // in a string, behind a backslash
      "f(one,\n  two);\nthree;\n",        // over lines
      "void f(void) {\n  g(\n}\none;\n",  // a brace closes parentheses
      "one;\n}",                          // nothing to speak of
      "one; /* many words */",
      "#if A\none;\n#endif\n",
      "one;\n\n\n",
      "a {\n} }\none;\n",           // a brace too many, which leaves the class
      "a {\n} }}\none;\n}}two;\n",  // a statement renews the scope
      "}\na {\none;\n}}\ntwo;\n",
  };
  for (const std::string_view text : texts) EXPECT_EQ(described("a.txt", text), "") << text;
}

TEST(Omissions, TrustRecordsBehindAnOpenQuote) {
  EXPECT_EQ(described("a.h", "#if 0\nit's\n#endif\none;\ntwo;\n"), "");
}

TEST(Omissions, AreNotKnownOfAnAnswerInNoFormat) {
  EXPECT_TRUE(findOmissions("it's\none;\n", "[\nanything\n]\n").empty());
  EXPECT_TRUE(findOmissions("", "[\n]\n").empty());
}

TEST(Omissions, AreDescribedOnOneLine) {
  const std::string text = std::string(10'001, 'a') + "\n/*\n";
  EXPECT_EQ(describe(omissionsOf("a.js", text)),
            "1 of 2 lines left out (2 of 10,005 bytes): in a comment that has no end, from line 2; "
            "1 of 2 lines left out (10,001 of 10,005 bytes): longer than 10,000 bytes");
  EXPECT_EQ(describe(std::vector<Omission>()), "");
}

}  // namespace
