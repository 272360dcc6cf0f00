// The stripper is one state machine over all bytes of a file, so most rows here combine two of its
// states: a byte that is copied blindly, a bracket in a string, a marker in a comment.

#include <cstddef>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "cleaner/cleaner.h"

namespace {

using std::string_view_literals::operator""sv;

struct Case {
  std::string_view why;
  std::string_view text;
  std::string_view stripped;
};

constexpr Case kComments[] = {
    {"no text", ""sv, ""sv},
    {"a line comment keeps its line feed", "a = 1; // note\nb = 2;"sv, "a = 1; \nb = 2;"sv},
    {"a line comment without a line feed", "// only"sv, ""sv},
    {"two slashes are enough", "a//"sv, "a"sv},
    {"a third slash is comment text", "a///b\nc"sv, "a\nc"sv},
    {"a block opener in a line comment is text", "///* x */\ny"sv, "\ny"sv},
    {"a star in a line comment", "//*\nx"sv, "\nx"sv},
    {"a block closer in a line comment", "// */\nx"sv, "\nx"sv},
    {"a quote in a line comment opens nothing", "// it's\nx = 'a' // b"sv, "\nx = 'a' "sv},
    {"a double quote in a line comment", "// \"\nx // b"sv, "\nx "sv},
    {"a carriage return does not end a line comment", "// a\rb\nc"sv, "\nc"sv},
    {"a carriage return before the line feed goes", "x = 1; // a\r\ny"sv, "x = 1; \ny"sv},
    {"two line comments", "//a\n//b\nc"sv, "\n\nc"sv},

    {"required: the first byte of a block comment survives", "/*x*/y"sv, "xy"sv},
    {"that byte and the byte behind the comment", "/* hi */ x"sv, "  x"sv},
    {"required: the second star stays in the text", "/**\n * doc\n */\nfoo();"sv,
     "*\n\n\nfoo();"sv},
    {"the shortest comment holds no first byte", "/**/"sv, "*"sv},
    {"of three stars the middle one survives", "/***/x"sv, "*x"sv},
    {"a slash behind the opener is the surviving byte", "/*/ y */ z"sv, "/ z"sv},
    {"a bare opener", "/*"sv, ""sv},
    {"an opener and one byte", "/*a"sv, "a"sv},
    {"a comment without an end", "a /* x"sv, "a  "sv},
    {"it keeps its line feeds", "a /* x\ny\n\nz"sv, "a  \n\n\n"sv},
    {"a line feed as the surviving byte", "/*\nx\n*/y"sv, "\n\ny"sv},
    {"a carriage return as the surviving byte", "/*\r\n*/y"sv, "\r\ny"sv},
    {"a later carriage return goes", "/*x\r\n*/y"sv, "x\ny"sv},
    {"a quote in a block comment opens nothing", "/* it's */ x // b"sv, "  x "sv},
    {"a double quote in a block comment", "/* \" */ x // b"sv, "  x "sv},
    {"a quote as the surviving byte opens nothing", "/*'*/a'b // c"sv, "'a'b // c"sv},
    {"slashes in a block comment are text", "/* // */x"sv, " x"sv},
    {"a star and a slash apart do not close", "/* a * / b */c"sv, " c"sv},
    {"an inner opener lets one more byte out", "/* a /* b */ c"sv, "   c"sv},
    {"and that byte may be the closing slash", "/*//*/x"sv, "//"sv},
    {"an opener in an opener", "/*/**/x"sv, "/*x"sv},
    {"the comment's last byte is its slash", "/*a*/"sv, "a"sv},

    {"required: a comment behind a comment is not seen", "/* a *//* b */ c"sv, " /* b */ c"sv},
    {"a line comment behind a comment", "/*a*///b\nc"sv, "a//b\nc"sv},
    {"a lone slash behind a comment", "/*a*//b"sv, "a/b"sv},
    {"a quote behind a comment opens nothing", "/* a */\"b\"; // c"sv, " \"b\"; // c"sv},
    {"a single quote behind a comment", "/* a */'b // c\nd"sv, " 'b \nd"sv},

    {"a closer outside a comment is text", "*/ x"sv, "*/ x"sv},
    {"a star is text", "a * b ** c"sv, "a * b ** c"sv},
    {"a star before a line comment", "*//x"sv, "*"sv},
    {"a lone slash is text", "a / b"sv, "a / b"sv},
    {"two lone slashes", "a/b/c"sv, "a/b/c"sv},
    {"slashes apart", "a / / b"sv, "a / / b"sv},
    {"required: a slash that ends the text is its own next byte", "a /"sv, "a "sv},
    {"the slash alone", "/"sv, ""sv},
    {"a star that ends the text stays", "a *"sv, "a *"sv},
    {"a slash before the last line feed stays", "a /\n"sv, "a /\n"sv},
};

constexpr Case kStrings[] = {
    {"comment openers in a string", "x = \"a/*b*/c\";"sv, "x = \"a/*b*/c\";"sv},
    {"in a single-quoted one", "x = 'a//b/*c'; // d"sv, "x = 'a//b/*c'; "sv},
    {"a comment behind a string", "u = \"p//q\"; // y"sv, "u = \"p//q\"; "sv},
    {"a star in a string", "x = \"*\" // y"sv, "x = \"*\" "sv},
    {"a slash that ends the text in a string", "x = \"/"sv, "x = \"/"sv},
    {"an escaped quote does not close", "s = 'it\\'s // ok'; t"sv, "s = 'it\\'s // ok'; t"sv},
    {"nor does an escaped double quote", "s = \"a\\\"// b\" // c"sv, "s = \"a\\\"// b\" "sv},
    {"two backslashes cancel out", "s = \"a\\\\\" // b"sv, "s = \"a\\\\\" "sv},
    {"three do not", "s = \"a\\\\\\\" // b"sv, "s = \"a\\\\\\\" // b"sv},
    {"an escaped line feed", "'a\\\nb' // c"sv, "'a\\\nb' "sv},
    {"a backslash outside a string is text", "\\\"a // b"sv, "\\\"a // b"sv},
    {"the other quote is an ordinary byte", "\"it's\" // x"sv, "\"it's\" "sv},
    {"and the other way round", "'say \"hi' // x"sv, "'say \"hi' "sv},
    {"a string may hold a line feed", "c=\"\n\""sv, "c=\"\n\""sv},
    {"an open string keeps comments", "c = 'a\n// b\n/* c */"sv, "c = 'a\n// b\n/* c */"sv},
    {"empty strings", "'' // a\n\"\" // b"sv, "'' \n\"\" "sv},
    {"a carriage return in a string", "'a\r\n' // b"sv, "'a\r\n' "sv},
    {"required: a backtick is an ordinary byte", "w = `p//q`;"sv, "w = `p"sv},
    {"a quote in a template opens a string", "`it's` // c"sv, "`it's` // c"sv},
    {"required: a regular expression is not known", "/a\\//g"sv, "/a\\"sv},
    {"a quote in a regular expression opens a string", "/'/ // c"sv, "/'/ // c"sv},
    {"an at sign before a quote means nothing", "@\"a\\\" // b\""sv, "@\"a\\\" // b\""sv},
};

constexpr Case kBrackets[] = {
    {"required: a bracket that opens the text is lost", "[1,2].forEach(f);"sv,
     "1,2].forEach(f);"sv},
    {"the bracket alone", "["sv, ""sv},
    {"each of several", "[[1], [2]]"sv, "1], [2]]"sv},
    {"a space keeps the statement's start", " [ [1]"sv, "  1]"sv},
    {"behind a semicolon", "a;[b];"sv, "a;b];"sv},
    {"behind a semicolon and a space", "a; [b]"sv, "a; b]"sv},
    {"not behind an equals sign", "x = [1];"sv, "x = [1];"sv},
    {"behind a line feed", "a\n[b]"sv, "a\nb]"sv},
    {"behind a brace and a space", "} [c]"sv, "} c]"sv},
    {"a closing brace does not begin a statement", "a}[c]"sv, "a}[c]"sv},
    {"but leaves one begun", "a;}[c]"sv, "a;}c]"sv},
    {"an opening brace ends it", "{ [a] }"sv, "{ [a] }"sv},
    {"a star ends it", "*[a]"sv, "*[a]"sv},
    {"a lone slash ends it", "/[a]/.test(s)"sv, "/[a]/.test(s)"sv},
    {"a carriage return ends it", "\r[a]"sv, "\r[a]"sv},
    {"a closing bracket ends it", "][a]"sv, "][a]"sv},
    {"required: a string does not end it", "\"[a]\";"sv, "\"a]\";"sv},
    {"nor does any byte of the string", "'x[a]' [b]"sv, "'xa]' b]"sv},
    {"an escaped bracket is copied unseen", "\"\\[a]\""sv, "\"\\[a]\""sv},
    {"a bracket in a later string stays", "x = \"[a]\""sv, "x = \"[a]\""sv},
    {"a semicolon in a string starts a statement", "x = \"; [a] [b]\""sv, "x = \"; a] b]\""sv},
    {"that outlasts the string", "x = \";\" [a]"sv, "x = \";\" a]"sv},
    {"a line feed in a string does not", "x = \"\n[a]\""sv, "x = \"\n[a]\""sv},
    {"a semicolon in a line comment does", "a // ;\n[b]"sv, "a \nb]"sv},
    {"required: the line feed that ends a line comment does not", "a // b\n[c]"sv, "a \n[c]"sv},
    {"a line comment leaves the start as it is", "// c\n[a]"sv, "\na]"sv},
    {"a semicolon in a block comment starts a statement", "x/* ;*/ [a]"sv, "x  a]"sv},
    {"but not as its surviving byte", "x/*;*/ [a]"sv, "x; [a]"sv},
    {"a line feed in a block comment does not", "a /* x\n*/ [c]"sv, "a  \n [c]"sv},
    {"nor does the one behind it", "a /* x */\n[c]"sv, "a  \n[c]"sv},
    {"a bracket behind a block comment is copied unseen", "/* c */[a]"sv, " [a]"sv},
    {"one byte further it is lost", "/* c */ [a]"sv, "  a]"sv},
    {"a bracket as the surviving byte", "/*[*/ [a]"sv, "[ a]"sv},
    {"a byte outside printable ASCII keeps the start", "\xE9\t[a]"sv, "  a]"sv},
};

constexpr Case kMarkerRuns[] = {
    {"all up to the semicolon goes", "TTTTTfoo;bar"sv, "bar"sv},
    {"the semicolon goes too", "a=1;TTTTT;b"sv, "a=1;b"sv},
    {"behind one byte", "xTTTTTa;b"sv, "xb"sv},
    {"required: a d two bytes before prevents it", "d TTTTT;x"sv, "d TTTTT;x"sv},
    {"any byte may stand between", "d\nTTTTT;x"sv, "d\nTTTTT;x"sv},
    {"also when the d is in a comment", "//d\nTTTTT;x"sv, "\nTTTTT;x"sv},
    {"a d right before does not", "dTTTTTa;b"sv, "db"sv},
    {"a d three bytes before does not", "d  TTTTT;x"sv, "d  x"sv},
    {"an upper-case D does not", "D TTTTT;x"sv, "D x"sv},
    {"prevented at the first T, begun at the second", "d TTTTTT;x"sv, "d Tx"sv},
    {"required: the d is looked for where a lost bracket still stood", "[dxTTTTTa;b"sv,
     "dxTTTTTa;b"sv},
    {"and nowhere else", "[xdTTTTTa;b"sv, "xdb"sv},
    {"four are not enough", "TTTT;x"sv, "TTTT;x"sv},
    {"four and a lower-case one", "TTTTt;x"sv, "TTTTt;x"sv},
    {"five at the end of the text begin nothing", "TTTTT"sv, "TTTTT"sv},
    {"nor behind other text", "aTTTTT"sv, "aTTTTT"sv},
    {"six do", "TTTTTT"sv, ""sv},
    {"a run without an end", "a;TTTTTx\ny"sv, "a;"sv},
    {"required: its line feeds are lost", "ab TTTTT\nq;r"sv, "ab r"sv},
    {"and its carriage returns", "TTTTT\r\n;r"sv, "r"sv},
    {"a second marker in a run is text", "TTTTT TTTTT;a;b"sv, "a;b"sv},
    {"a quote in a run opens nothing", "TTTTT'a;b // c"sv, "b "sv},
    {"comments in a run open nothing", "TTTTT/*;x//y\nz"sv, "x\nz"sv},
    {"a bracket in a run", "TTTTT[;a"sv, "a"sv},
    {"a run does not begin a statement", "x TTTTT;[a]"sv, "x [a]"sv},
    {"nor does it end the start of one", "TTTTT;[a]"sv, "a]"sv},
    {"no run in a string", "\"TTTTTx;\"y"sv, "\"TTTTTx;\"y"sv},
    {"nor in a single-quoted one", "'TTTTTx;'y"sv, "'TTTTTx;'y"sv},
    {"nor in a line comment", "// TTTTTx\na;b"sv, "\na;b"sv},
    {"nor in a block comment", "/* TTTTTx*/a;b"sv, " a;b"sv},
    {"a T behind a comment is copied unseen", "/**/TTTTT;x"sv, "*TTTTT;x"sv},
    {"and the run begins at the next", "/**/TTTTTT;x"sv, "*Tx"sv},
    {"a byte outside printable ASCII in a run gives its space", "TTTTT\x01\xE9\n;a"sv, "  a"sv},
};

constexpr Case kOddBytes[] = {
    {"a byte of 0x80 and above", "x\xE9y"sv, "x y"sv},
    {"a two-byte letter gives two spaces", "x\xC3\xA9y"sv, "x  y"sv},
    {"0x80", "x\x80y"sv, "x y"sv},
    {"0xFF", "x\xFFy"sv, "x y"sv},
    {"a form feed", "x\fy"sv, "x y"sv},
    {"a vertical tab", "x\vy"sv, "x y"sv},
    {"a tab", "x\ty"sv, "x y"sv},
    {"NUL", "x\0y"sv, "x y"sv},
    {"NUL at either end", "\0x\0"sv, " x "sv},
    {"0x1F", "x\x1Fy"sv, "x y"sv},
    {"a space stays", "x y"sv, "x y"sv},
    {"0x7E stays", "x~y"sv, "x~y"sv},
    {"0x7F", "x\x7Fy"sv, "x y"sv},
    {"a line feed stays", "x\ny"sv, "x\ny"sv},
    {"a carriage return stays", "x\r\ny"sv, "x\r\ny"sv},
    {"required: in a line comment they become spaces too", "a // \xC3\xA9 b\nc"sv, "a   \nc"sv},
    {"and in a block comment", "/*x\xC3\xA9*/y"sv, "x  y"sv},
    {"0x7F in a comment", "//\x7F\n"sv, " \n"sv},
    {"in a string", "'\xE9' // a"sv, "' ' "sv},
    {"before the surviving byte", "/*\x01xy*/z"sv, " xz"sv},
    {"before the byte behind a comment", "/*a*/\t\"b\" // c"sv, "a \"b\" // c"sv},
    {"between a backslash and the byte that it protects", "'\\\xE9'b' // c"sv, "'\\ 'b' "sv},
    {"between two slashes", "a /\x01/ b"sv, "a / / b"sv},
    {"between a star and a slash", "/*a*\x01/ b"sv, "a "sv},
};

// Whether the row also holds after before, which contains no comment.
bool expectStripped(const Case& row, const std::string& before) {
  SCOPED_TRACE(testing::Message() << row.why << ": " << testing::PrintToString(row.text)
                                  << " behind " << before.size() << " line feeds");
  const std::string text = before + std::string(row.text);
  const std::string stripped = before + std::string(row.stripped);
  Cleaner cleaner;
  const std::string results[] = {cleaner.UncommentAndUnquoteText(text),
                                 cleaner.UncommentAndUnquoteText(text, false),
                                 cleaner.UncommentAndUnquoteText(text, true)};
  for (const std::string& result : results) {
    EXPECT_EQ(result, stripped);
    if (result != stripped) return false;
  }
  return true;
}

// The state after a line feed in code is the initial state, so a row holds at any offset, however
// the text is divided into blocks.
template <std::size_t kCount>
void expectStrippedAtAnyOffset(const Case (&rows)[kCount]) {
  for (const Case& row : rows) {
    std::string before;
    while (expectStripped(row, before) && before.size() < 70) before += '\n';
  }
}

TEST(CommentStripping, Comments) { expectStrippedAtAnyOffset(kComments); }
TEST(CommentStripping, Strings) { expectStrippedAtAnyOffset(kStrings); }
TEST(CommentStripping, BracketsAtTheStartOfAStatement) { expectStrippedAtAnyOffset(kBrackets); }
TEST(CommentStripping, MarkerRuns) { expectStrippedAtAnyOffset(kMarkerRuns); }
TEST(CommentStripping, OddBytes) { expectStrippedAtAnyOffset(kOddBytes); }

// Each byte value between two letters.
TEST(CommentStripping, EveryByteValue) {
  Cleaner cleaner;
  for (int value = 0; value < 256; ++value) {
    const bool kept = value == '\n' || value == '\r' || (value >= 0x20 && value <= 0x7E);
    const std::string text = {'x', static_cast<char>(value), 'y'};
    EXPECT_EQ(cleaner.UncommentAndUnquoteText(text), kept ? text : std::string("x y"))
        << "byte " << value;
  }
}

// Plain runs of any length around a comment: no byte may be lost or duplicated.
TEST(CommentStripping, EveryLengthOfRun) {
  Cleaner cleaner;
  for (std::size_t length = 1; length <= 140; ++length) {
    const std::string run(length, 'r');
    EXPECT_EQ(cleaner.UncommentAndUnquoteText(run + "//" + run + "\n" + run), run + "\n" + run);
    EXPECT_EQ(cleaner.UncommentAndUnquoteText(run + "/*" + run + "*/" + run), run + "r" + run);
    EXPECT_EQ(cleaner.UncommentAndUnquoteText("'" + run + "//'" + run), "'" + run + "//'" + run);
    EXPECT_EQ(cleaner.UncommentAndUnquoteText("TTTTT" + run + ";" + run), run);
  }
}

TEST(CommentStripping, NothingIsKeptBetweenCalls) {
  Cleaner cleaner;
  for (const char* open : {"a /* b", "a // b", "a 'b", "a \"b", "TTTTTb", "a '\\", "/*a*/"}) {
    cleaner.UncommentAndUnquoteText(open);
    EXPECT_EQ(cleaner.UncommentAndUnquoteText("x 'y' // z\n[w]"), "x 'y' \n[w]") << open;
  }
}

// required: inside a comment that never ends, each opener lets the next byte through.
TEST(CommentStripping, ManyOpenersWithoutACloser) {
  constexpr std::size_t kOpeners = 200'000;
  std::string text;
  for (std::size_t i = 0; i < kOpeners; ++i) text += "/*-\n";
  std::string stripped;
  for (std::size_t i = 0; i < kOpeners; ++i) stripped += "-\n";
  EXPECT_EQ(Cleaner().UncommentAndUnquoteText(text), stripped);
}

}  // namespace
