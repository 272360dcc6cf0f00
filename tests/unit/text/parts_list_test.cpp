#include "text/parts_list.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using Parts = std::vector<std::string>;

Parts partsOf(std::string_view statement) {
  Parts parts;
  PartsList(std::string(statement), parts);
  return parts;
}

struct PartsCase {
  std::string_view statement;
  Parts parts;
  std::string_view why = "";
};

void expectParts(const std::vector<PartsCase>& cases) {
  for (const PartsCase& row : cases) {
    SCOPED_TRACE(testing::PrintToString(row.statement) + " " + std::string(row.why));
    EXPECT_EQ(partsOf(row.statement), row.parts);
  }
}

TEST(PartsList, Statements) {
  expectParts({
      {"var x = 1;", {"var", "x", "=", "1", ";"}},
      {"const a=b+c;", {"const", "a", "=", "b", "+", "c", ";"}},
      {"function foo(a, b) {", {"function", "foo", "(", "a", ",", "b", ")", "{"}},
      {"let f = (x) => x * 2;", {"let", "f", "=", "(", "x", ")", "=>", "x", "*", "2", ";"}},
      {R"(obj.method(1.5, "two");)", {"obj", ".", "method", "(", "1.5", ",", "\"two\"", ")", ";"}},
      {"foo.bar.baz()", {"foo", ".", "bar", ".", "baz", "(", ")"}},
      {"{a:1}", {"{", "a", ":", "1", "}"}},
      {"a[0]=1", {"a", "[", "0", "]", "=", "1"}},
      {"a ? b : c", {"a", "?", "b", ":", "c"}},
      {R"($el.on("click"))", {"$el", ".", "on", "(", "\"click\"", ")"}},
      {"return;", {"return", ";"}},
      {"// x", {"//", "x"}, "comments are not known"},
      {"/a b/g", {"/", "a", "b", "/", "g"}, "nor are regular expressions"},
  });
}

TEST(PartsList, WhiteSpace) {
  expectParts({
      {"  spaced   out  ", {"spaced", "out"}},
      {" ", {}},
      {" \t\n\v\f\r ", {}},
      {"a b\tc\nd\ve\ff\rg", {"a", "b", "c", "d", "e", "f", "g"}, "each of the six parts words"},
      {"a\x1F"
       "b\b",
       {"a\x1F"
        "b\b"},
       "other control bytes are word bytes"},
      {"a\xA0z\x85", {"a\xA0z\x85"}, "white space of other encodings too"},
  });
}

TEST(PartsList, LoneSeparators) {
  expectParts({
      {":();[]{},", {":", "(", ")", ";", "[", "]", "{", "}", ","}},
      {"::", {":", ":"}, "a separator never joins another"},
      {"a:b;c", {"a", ":", "b", ";", "c"}},
      {"(=", {"(", "="}, "nor an operator"},
      {"=(", {"=", "("}},
      {"]+", {"]", "+"}},
      {"{x", {"{", "x"}, "nor a word"},
  });
}

TEST(PartsList, WordBytes) {
  expectParts({
      {"a&&b||c", {"a&&b||c"}, "required: & and | are word bytes"},
      {"a?b:c", {"a?b", ":", "c"}},
      {"x ^= 1", {"x", "^", "=", "1"}},
      {"_a$b@c#d~e^f&g|h?i\\j", {"_a$b@c#d~e^f&g|h?i\\j"}},
      {"&=", {"&", "="}, "a word byte glues to no operator"},
      {"=&", {"=", "&"}},
      {"caf\xC3\xA9 = \xFF", {"caf\xC3\xA9", "=", "\xFF"}, "so are all bytes of 0x80 and above"},
      {R"(\"a")", {"\\", "\"a\""}, "a backslash outside strings protects nothing"},
      {"a\\ b", {"a\\", "b"}},
  });
}

TEST(PartsList, Dots) {
  expectParts({
      {"a1.b = 2;", {"a1.b", "=", "2", ";"}, "required: a digit before it swallows the dot"},
      {"1.5.2", {"1.5.2"}},
      {"x.5", {"x", ".", "5"}},
      {".5", {".", "5"}, "a dot in first place is its own part"},
      {".", {"."}},
      {"1 .5", {"1", ".", "5"}, "the byte before the dot is a space"},
      {"1.", {"1."}},
      {"1..x", {"1.", ".", "x"}, "the byte before the second dot is a dot"},
      {"1. x", {"1.", "x"}},
      {"1.+2", {"1.", "+", "2"}},
      {"1.(", {"1.", "("}},
      {"a.1.b", {"a", ".", "1.b"}},
      {"a..b", {"a", ".", ".", "b"}},
      {"...args", {".", ".", ".", "args"}},
      {"a.=", {"a", ".", "="}, "a dot joins no operator"},
      {"=.a", {"=", ".", "a"}},
      {"\"1\".a", {"\"1\"", ".", "a"}, "the byte before the dot is a quote"},
      {"(1).a", {"(", "1", ")", ".", "a"}},
      {"0.a9.b", {"0.a9.b"}},
      {"a9.b.c", {"a9.b", ".", "c"}},
      {"/.a", {"/", ".", "a"}, "the bytes beside the digits are not digits"},
      {"2:.a", {"2", ":", ".", "a"}},
  });
}

TEST(PartsList, JoinedOperators) {
  expectParts({
      {"i++;", {"i", "++", ";"}},
      {"a===b", {"a", "===", "b"}},
      {"a!==b", {"a", "!==", "b"}},
      {"a<=b", {"a", "<=", "b"}},
      {"x=-1", {"x", "=-", "1"}, "required: gluing knows no table of operators"},
      {"x=!y", {"x", "=!", "y"}},
      {"x /= 2", {"x", "/=", "2"}},
      {"x+=1", {"x", "+=", "1"}},
      {"x%=1", {"x", "%=", "1"}},
      {"a-->b", {"a", "-->", "b"}},
      {"<!-- x", {"<!", "--", "x"}, "required: - glues to no !"},
      {"a % = 3", {"a", "%", "=", "3"}, "white space separates"},
      {"!!x", {"!!", "x"}},
      {"a<-b", {"a", "<", "-", "b"}, "required: - glues to no <"},
      {"a>+b", {"a", ">", "+", "b"}, "required: + glues to no >"},
      {"a!-b", {"a", "!", "-", "b"}},
      {"!=-", {"!=-"}, "through ="},
      {"+++", {"+++"}},
      {">>>=", {">>>="}},
      {"+*%/-", {"+*%/-"}},
      {"><=!", {"><=!"}},
      {"=+", {"=+"}},
      {"=*", {"=*"}},
      {"=%", {"=%"}},
      {"=/", {"=/"}},
      {"+>", {"+>"}},
      {"*<", {"*<"}},
      {"%=", {"%="}},
      {"/!", {"/!"}},
      {"->", {"->"}},
      {"<+=", {"<", "+="}},
      {"=-=-=-=-=-=-=-=-", {"=-=-=-=-=-=-=-=-"}, "there is no limit of length"},
      {"a=b", {"a", "=", "b"}, "a word is flushed"},
      {"a+b", {"a", "+", "b"}},
      {"1.=2", {"1.", "=", "2"}},
      {"\"a\"+b", {"\"a\"", "+", "b"}, "a string is flushed"},
      {"'+'+'='", {"''+'", "+", "''='"}},
      {"`=`=", {"``=`", "="}},
      {"!a", {"!", "a"}},
  });
}

TEST(PartsList, Strings) {
  expectParts({
      {R"(s = 'it\'s';)", {"s", "=", R"(''it\'s')", ";"}},
      {"'abc'", {"''abc'"}, "required: a single quote is doubled at the front"},
      {"t = `a${b}c`;", {"t", "=", "``a${b}c`", ";"}, "required: and so is a backtick"},
      {"\"abc\"", {"\"abc\""}, "required: but not a double quote"},
      {R"("a\"b")", {R"("a\"b")"}},
      {R"("abc"def)", {"\"abc\"", "def"}},
      {R"(x"a")", {"x", "\"a\""}},
      {"x'a'", {"x", "''a'"}},
      {"x`a`", {"x", "``a`"}},
      {"''", {"'''"}},
      {"``", {"```"}},
      {"\"\"", {"\"\""}},
      {"'a''b'", {"''a'", "''b'"}},
      {"'a'\"b\"`c`", {"''a'", "\"b\"", "``c`"}},
      {"'a", {"''a"}, "a string still open at the end is a part"},
      {"`a", {"``a"}},
      {"\"a", {"\"a"}},
      {"'", {"''"}},
      {"`", {"``"}},
      {"\"", {"\""}},
      {"\" a\t b ;\"", {"\" a\t b ;\""}, "white space and separators stay inside"},
      {"` a\n b `", {"`` a\n b `"}},
      {"\"a'b`c\"", {"\"a'b`c\""}, "other quotes open nothing inside"},
      {"'a\"b`c'", {"''a\"b`c'"}},
      {"`a'b\"c`", {"``a'b\"c`"}},
      {"`${`x`}`", {"``${`", "x", "``}`"}, "template holes are not known"},
      {"'.'.a", {"''.'", ".", "a"}},
      {"\"caf\xC3\xA9\"", {"\"caf\xC3\xA9\""}},
  });
}

TEST(PartsList, Escapes) {
  expectParts({
      {R"('a\\'b)", {R"(''a\\')", "b"}, "two backslashes cancel out"},
      {R"("a\\"b)", {R"("a\\")", "b"}},
      {R"(`a\\`b)", {R"(``a\\`)", "b"}},
      {R"('a\\\'b)", {R"(''a\\\'b)"}, "three do not"},
      {R"(`a\`b`c)", {R"(``a\`b`)", "c"}},
      {R"('a\b'c)", {R"(''a\b')", "c"}, "any other byte ends the escape"},
      {R"("\")", {R"("\")"}},
      {R"('a\`'b)", {R"(''a\`'b)"}, "required: a backtick leaves the escape waiting"},
      {R"("a\`"b)", {R"("a\`"b)"}, "required: within double quotes too"},
      {R"('a\`x'b)", {R"(''a\`x')", "b"}, "until any other byte ends it"},
      {R"('a\"'b)", {R"(''a\"')", "b"}, "another quote does end it"},
      {R"("a\'"b)", {R"("a\'")", "b"}},
      {R"(`a\'`b)", {R"(``a\'`)", "b"}},
      {R"(`a\"`b)", {R"(``a\"`)", "b"}},
      {R"('a\`\'b)", {R"(''a\`\')", "b"}, "a second backslash cancels the waiting one"},
  });
}

TEST(PartsList, StopsAtTheFirstNul) {
  expectParts({
      {"a b\0c"sv, {"a", "b"}},
      {"a\0"sv, {"a"}},
      {"\0a"sv, {}},
      {"\"a\0b\""sv, {"\"a"}, "inside a string too"},
      {"(\0)"sv, {"("}},
  });
}

TEST(PartsList, AppendsToTheList) {
  Parts parts{"kept", ""};
  PartsList("a;", parts);
  EXPECT_EQ(parts, (Parts{"kept", "", "a", ";"}));
  PartsList("", parts);
  EXPECT_EQ(parts, (Parts{"kept", "", "a", ";"}));
  PartsList(" \n", parts);
  EXPECT_EQ(parts, (Parts{"kept", "", "a", ";"}));
  PartsList("'b'", parts);
  EXPECT_EQ(parts, (Parts{"kept", "", "a", ";", "''b'"}));
}

TEST(PartsList, KeepsNothingBetweenCalls) {
  EXPECT_EQ(partsOf("'open \\"), (Parts{"''open \\"}));
  EXPECT_EQ(partsOf("a"), (Parts{"a"}));
}

}  // namespace
