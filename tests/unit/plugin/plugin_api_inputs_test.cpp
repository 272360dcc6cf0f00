// Unusual files, by mistake or on purpose: odd bytes and line ends, very long lines, very many
// lines, and truncated files.
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/plugin_api.h"
#include "support/capture.h"
#include "support/record_values.h"
#include "support/temp_dir.h"

namespace {

using namespace std::string_view_literals;
using support::valuesOf;
using Values = std::vector<std::string>;

std::string parseBytes(const std::string& name, std::string_view bytes) {
  const support::TempDir directory;
  const std::string path = directory.write(name, bytes);
  std::string answer;
  support::stdoutOf([&] { answer = ParseJS(path.c_str(), nullptr); });
  CleanupJS();
  return answer;
}

// Returns CONTENTS@LINE of a script file's records after its three scope records.
std::string linesOf(std::string_view bytes) {
  const std::string answer = parseBytes("a.js", bytes);
  const Values contents = valuesOf(answer, "contents");
  const Values numbers = valuesOf(answer, "lineNumber");
  if (contents.size() < 3 || numbers.size() != contents.size()) return answer;
  std::string lines;
  for (std::size_t i = 3; i < contents.size(); ++i) {
    if (i > 3) lines += " ";
    lines += contents[i] + "@" + numbers[i];
  }
  return lines;
}

struct FileCase {
  std::string_view bytes;
  std::string_view lines;
  const char* why;
};

constexpr FileCase kFiles[] = {
    {"\n", "", "a lone line feed"},
    {" ", "", "a lone blank"},
    {"\0"sv, "", "a lone NUL"},
    {"\xFF"sv, "", "a lone byte above 0x7F"},
    {" \n\t\r\n \f", "", "white space"},
    {"// only\n", "", "a line comment"},
    {"// only", "", "without line feed"},
    {"/**/", "\"*\"@1", "required: the first byte of a block comment stays"},
    {"/* a\n b\n*/\n// c\n<!-- d -->\n", "", "comments of every kind"},
    {"a();", "\"a();\"@1", "no last line feed"},
    {"a();\nb();\n", "\"a();\"@1 \"b();\"@2", ""},
    {"a();\r\nb();\r\n", "\"a();\"@1 \"b();\"@3", "required: a CRLF counts as two lines"},
    {"a();\rb();\r", "\"a();\"@1 \"b();\"@2", "a carriage return ends a line"},
    {"a();\n\rb();", "\"a();\"@1 \"b();\"@3", ""},
    {"// a\n/* b\n*/ c();\n", "\"c();\"@3", "comments keep their line feeds"},
    {"\xEF\xBB\xBF"
     "a();\n",
     "\"a();\"@1", "a byte order mark"},
    {"a\0b();\n"sv, "\"a b();\"@1", "a NUL is a blank and ends nothing"},
    {"\0\0\0a();\0\n\0b();"sv, "\"a();\"@1 \"b();\"@2", ""},
    {"s = 'caf\xC3\xA9';\n", "\"s = \\'caf \\';\"@1", "two bytes, two blanks, reduced to one"},
    {"a\x1B[0mb();\n", "\"a [0mb();\"@1", "an escape sequence"},
    {"\x7F"
     "ELF\x02\x01\x01\0\0\0"sv,
     "\"ELF\"@1", "the head of a program"},
    {"#!/usr/bin/env node\na();\n", "\"a();\"@2", "a line of # is dropped"},
    {"\\\n\\", "\"\\\\\"@1 \"\\\\\"@2", "backslashes alone"},
    {"'\na();\n", "\"\\'\"@1 \"a();\"@2", "a quote that is never closed"},
    {"/* never closed\na();\n", "", "a comment that is never closed"},
};

TEST(Inputs, OddFilesOfTheScriptRoute) {
  for (const FileCase& row : kFiles) {
    SCOPED_TRACE(testing::PrintToString(std::string(row.bytes)) + "  // " + row.why);
    EXPECT_EQ(linesOf(row.bytes), row.lines);
  }
}

TEST(Inputs, EveryByteValueOnce) {
  std::string bytes;
  for (int value = 0; value < 256; ++value) bytes += static_cast<char>(value);
  // The line feed and the carriage return each end a line. The double quote opens a string that is
  // never closed, in which the ; makes the next [ look like the start of a statement: it is
  // dropped.
  EXPECT_EQ(linesOf(bytes),
            "\"!\\\"#$%&\\'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ\\\\]^_`"
            "abcdefghijklmnopqrstuvwxyz{|}~\"@3");
}

TEST(Inputs, BinaryFilesReturnAnArrayOnEveryRoute) {
  std::string bytes;
  for (int i = 0; i < 4096; ++i) bytes += static_cast<char>(i * 7919 % 256);
  for (const char* name : {"a.js", "a.html", "a.txt", "a"}) {
    const std::string answer = parseBytes(name, bytes);
    EXPECT_EQ(answer.substr(0, 4), "[\n  ") << name;
    EXPECT_EQ(answer.substr(answer.size() - 2), "]\n") << name;
  }
}

TEST(Inputs, FilesOfBlanksAndCommentsReturnAnArrayOnEveryRoute) {
  const struct {
    const char* name;
    Values contents;
  } rows[] = {
      {"a.js", {"\"a.js\"", "\"namespace global\"", "\"A\""}},
      {"a.html", {"\"a.html\"", "\"namespace document\"", "\"HTMLDocument\""}},
      {"a.txt", {"\"a.txt\"", "\"class GlobalScope\""}},
  };
  for (const auto& row : rows) {
    for (const char* text : {" ", "\n\n", "// only\n", "/* only\n*/\n", "<!-- only -->\n"}) {
      EXPECT_EQ(valuesOf(parseBytes(row.name, text), "contents"), row.contents)
          << row.name << ": " << testing::PrintToString(text);
    }
  }
}

TEST(Inputs, ALineOfTenMegabytesIsDroppedButCounted) {
  const std::string line(10 * 1024 * 1024, 'x');
  EXPECT_EQ(linesOf("a();\n" + line + "\nb();\n"), "\"a();\"@1 \"b();\"@3");
  EXPECT_EQ(linesOf(line), "");
}

TEST(Inputs, ALongCommentLeavesNothing) {
  EXPECT_EQ(linesOf("a();\n/*" + std::string(10 * 1024 * 1024, '*') + "*/\nb();\n"),
            "\"a();\"@1 \"*\"@2 \"b();\"@3")
      << "required: the first byte of a block comment stays";
}

TEST(Inputs, HalfOfTwoHundredThousandLinesAreRead) {
  std::string bytes;
  for (int i = 1; i <= 200000; ++i) bytes += "f(" + std::to_string(i) + ");\n";
  const std::string answer = parseBytes("a.js", bytes);
  const Values contents = valuesOf(answer, "contents");
  ASSERT_EQ(contents.size(), 3u + 100000u);
  EXPECT_EQ(contents[3], "\"f(1);\"");
  EXPECT_EQ(contents.back(), "\"f(100000);\"");
  EXPECT_EQ(valuesOf(answer, "lineNumber").back(), "100000");
  EXPECT_EQ(valuesOf(answer, "nodeID").back(), "100002");
}

TEST(Inputs, UnclosedHeadsNestToTheLimit) {
  std::string bytes;
  for (int i = 0; i < 3000; ++i) bytes += "function f() {\n";
  const Values parents = valuesOf(parseBytes("a.js", bytes), "parentID");
  ASSERT_EQ(parents.size(), 3u + 3000u);
  EXPECT_EQ(parents[3 + 998], "1000") << "the last scope that fits is under the one before it";
  EXPECT_EQ(parents[3 + 999], "1001");
  EXPECT_EQ(parents.back(), "1001") << "the rest are siblings in it";
}

TEST(Inputs, ATruncatedFileReturnsAnArray) {
  const std::string whole =
      "/* c */ import a from 'a';\r\nclass B {\n\tm(x) {\n\t\treturn `${x}`; // d\n\t}\n}\n"
      "#ifdef X\nif (a) { b(\"}\"); } else {\n#endif\nconst f = y => {\n};\n";
  for (const char* name : {"a.js", "a.html", "a.txt"}) {
    for (std::size_t length = 1; length <= whole.size(); ++length) {
      const std::string answer = parseBytes(name, std::string_view(whole).substr(0, length));
      ASSERT_EQ(answer.substr(0, 4), "[\n  ") << name << " " << length;
      ASSERT_EQ(answer.substr(answer.size() - 6), "\n  }\n]\n"sv.substr(1))
          << name << " " << length;
    }
  }
}

}  // namespace
