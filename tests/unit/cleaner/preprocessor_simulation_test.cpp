// The line-wise directive pass. Each row's output must have exactly the line feeds of its text,
// which is checked in addition to the bytes.

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "cleaner/cleaner.h"
#include "support/capture.h"
#include "support/names.h"

namespace {

using std::string_view_literals::operator""sv;
using support::names;

struct DirectiveCase {
  std::string_view why;
  std::string_view known;  // names for conditions
  std::string_view text;
  std::string_view output;
  std::string_view gained;  // names added to the running list
};

constexpr DirectiveCase kPlainLines[] = {
    {"no text", "", ""sv, ""sv, ""},
    {"lines without indentation", "", "a\nb\n"sv, "a\nb\n"sv, ""},
    {"a last line without a line feed", "", "a\nb"sv, "a\nb"sv, ""},
    {"indentation goes", "", "function f() {\n    return 1;\n}\n"sv,
     "function f() {\nreturn 1;\n}\n"sv, ""},
    {"also that of the first and the last line", "", "  a\n  b"sv, "a\nb"sv, ""},
    {"spaces within and behind stay", "", "a  b  \n"sv, "a  b  \n"sv, ""},
    {"empty lines change nothing", "", "\n\n  a\n\n  b\n"sv, "\n\na\n\nb\n"sv, ""},
    {"required: a line of spaces keeps the next line's indentation", "", "a\n   \n   b\n   c\n"sv,
     "a\n\n   b\nc\n"sv, ""},
    {"also as the first line", "", "   \n  b\n  c\n"sv, "\n  b\nc\n"sv, ""},
    {"required: of two such lines the second stays", "", "  \n   \n  b\n"sv, "\n   \nb\n"sv, ""},
    {"of three the third goes again", "", "  \n   \n    \n  b\n"sv, "\n   \n\n  b\n"sv, ""},
    {"required: spaces that end the text are lost", "", "a\n   "sv, "a\n"sv, ""},
    {"but not behind a line of spaces", "", "  \n   "sv, "\n   "sv, ""},
    {"control bytes are dropped", "", "\ta\t\r\n\0b\x1F\f\v\n"sv, "a\nb\n"sv, ""},
    {"so are bytes of 0x80 and above", "",
     "\x80"
     "a\xC3\xA9\xFF\n"sv,
     "a\n"sv, ""},
    {"0x20 and 0x7F stay", "", "a \x7F\n"sv, "a \x7F\n"sv, ""},
    {"0x7F begins a line", "", "  \x7F #if A\n"sv, "\x7F #if A\n"sv, ""},
    {"a backslash that ends a plain line is text", "", "a \\\n  b\n"sv, "a \\\nb\n"sv, ""},
    {"also alone on its line", "", "  \\\n  b\n"sv, "\\\nb\n"sv, ""},
    {"a number sign within a line is text", "", "a #if A\nb#\n"sv, "a #if A\nb#\n"sv, ""},
    {"a backslash before it makes it text", "", "\\#if A\nb\n"sv, "\\#if A\nb\n"sv, ""},
};

constexpr DirectiveCase kDroppedLines[] = {
    {"a first line for a shell", "", "#!/usr/bin/env node\nvar a;\n"sv, "\nvar a;\n"sv, ""},
    {"a private field", "", "class A {\n  #x = 1;\n  get() {}\n}\n"sv,
     "class A {\n\nget() {}\n}\n"sv, ""},
    {"a style rule for an id", "", "#menu { top: 0 }\n  b {}\n"sv, "\nb {}\n"sv, ""},
    {"an unknown keyword", "", "#pragma once\n  b\n"sv, "\nb\n"sv, ""},
    {"a definition makes nothing known", "", "#define FOO 1\n#ifdef FOO\nyes\n#endif\n"sv,
     "\n\n\n\n"sv, "FOO"},
    {"nor does the end of one take it away", "A", "#undef A\n#ifdef A\nyes\n#endif\n"sv,
     "\n\nyes\n\n"sv, "A"},
    {"a number sign alone", "", "#\n  b\n"sv, "\nb\n"sv, ""},
    {"with spaces", "", "  #  \n  b\n"sv, "\nb\n"sv, ""},
    {"two number signs", "", "##if A\n  b\n"sv, "\nb\n"sv, ""},
    {"the keyword's case counts", "", "#IF A\n#Else\nb\n"sv, "\n\nb\n"sv, ""},
    {"a longer keyword", "", "#ifs A\nb\n#iff A\nc\n"sv, "\nb\n\nc\n"sv, ""},
    {"a control byte before the number sign", "", "\t\x01#foo\nb\n"sv, "\nb\n"sv, ""},
    {"a byte of 0x80 and above before it", "", "\xE9#foo\nb\n"sv, "\nb\n"sv, ""},
    {"a tab in a directive parts nothing", "", "#ifdef\tX\na\n"sv, "\na\n"sv, ""},
    {"required: an included file's line keeps the next line's indentation", "",
     "#include <a.h>\n  x\n  y\n"sv, "\n  x\ny\n"sv, ""},
    {"also without a path", "", "#include\n  x\n"sv, "\n  x\n"sv, ""},
    {"not without a space before the path", "", "#include<a.h>\n  x\n"sv, "\nx\n"sv, ""},
    {"the indentation of a directive stays there too", "", "#include <a>\n  #if A\nx\n"sv,
     "\n  \n\n"sv, "A"},
    {"a last directive without its line feed is lost", "", "a\n#foo"sv, "a\n"sv, ""},
    {"and names nothing", "", "#ifdef X"sv, ""sv, ""},
    {"nor does it end anything", "", "#ifdef X\na\n#endif"sv, "\n\n"sv, "X"},
};

constexpr DirectiveCase kContinuations[] = {
    {"over two lines", "", "#define X 1 \\\n  2\nq\n"sv, "\n\nq\n"sv, ""},
    {"over three lines", "", "#define X \\\n1 \\\n2\nq\n"sv, "\n\n\nq\n"sv, ""},
    {"spaces behind the backslash", "", "#define X \\  \n2\nq\n"sv, "\n\nq\n"sv, ""},
    {"a carriage return behind it", "", "#define X \\\r\n2\nq\n"sv, "\n\nq\n"sv, ""},
    {"a byte behind it ends the directive", "", "#define X \\.\n2\nq\n"sv, "\n2\nq\n"sv, ""},
    {"required: an empty line does not end it", "", "#define X \\\n\nq\nr\n"sv, "\n\n\nr\n"sv, ""},
    {"nor does a line of spaces", "", "#define X \\\n  \nq\nr\n"sv, "\n\n\nr\n"sv, ""},
    {"a directive in it is none", "", "#define X \\\n#if A\nq\n"sv, "\n\nq\n"sv, ""},
    {"required: the backslash stays in the name", "", "#if A \\\n#endif\nx\n#endif\ny\n"sv,
     "\n\n\n\ny\n"sv, "A \\#endif"},
    {"such a name may be known", "A \\B", "#if A \\\nB\nx\n#endif\n"sv, "\n\nx\n\n"sv, "A \\B"},
    {"the keyword may be continued", "A", "#if\\\ndef A\nx\n#endif\n"sv, "\n\nx\n\n"sv, "A"},
    {"the text may end in it", "", "a\n#define X \\\n"sv, "a\n\n"sv, ""},
    {"or with its second line", "", "#define X \\\n2"sv, "\n"sv, ""},
    {"the next line's indentation goes", "", "#define X \\\n2\n  q\n"sv, "\n\nq\n"sv, ""},
    {"an included path", "", "#include \\\n<a>\n  q\n"sv, "\n\n  q\n"sv, ""},
};

constexpr DirectiveCase kConditions[] = {
    {"an unknown name", "", "#ifdef X\na\n#else\nb\n#endif\nc\n"sv, "\n\n\nb\n\nc\n"sv, "X"},
    {"a known name", "X", "#ifdef X\na\n#else\nb\n#endif\nc\n"sv, "\na\n\n\n\nc\n"sv, "X"},
    {"one of several known names", "W,X,Y", "#ifdef X\na\n#endif\n"sv, "\na\n\n"sv, "X"},
    {"the name's case counts", "x", "#ifdef X\na\n#endif\n"sv, "\n\n\n"sv, "X"},
    {"the whole name counts", "XY", "#ifdef X\na\n#endif\n"sv, "\n\n\n"sv, "X"},
    {"an unknown name turned round", "", "#ifndef X\na\n#else\nb\n#endif\nc\n"sv,
     "\na\n\n\n\nc\n"sv, "X"},
    {"a known one", "X", "#ifndef X\na\n#else\nb\n#endif\nc\n"sv, "\n\n\nb\n\nc\n"sv, "X"},
    {"required: nothing is computed", "X", "#if defined(X)\na\n#endif\n#if 1\nb\n#endif\n"sv,
     "\n\n\n\n\n\n"sv, "defined(X),1"},
    {"the very text may be known", "1,defined(X)",
     "#if defined(X)\na\n#endif\n#if 1\nb\n#endif\n"sv, "\na\n\n\nb\n\n"sv, "defined(X),1"},
    {"a plain name", "X", "#if X\na\n#endif\n"sv, "\na\n\n"sv, "X"},
    {"two names are one", "A,B", "#if A && B\na\n#endif\n"sv, "\n\n\n"sv, "A && B"},
    {"brackets belong to the name", "X", "#if(X)\na\n#endif\n#if (X)\nb\n#endif\n"sv,
     "\n\n\n\n\n\n"sv, "(X)"},
    {"spaces around the words", "X", "  #  ifdef   X  \na\n #  endif \nb\n"sv, "\na\n\nb\n"sv, "X"},
    {"spaces within the name", "", "#if A  ||  B\n#endif\n"sv, "\n\n"sv, "A  ||  B"},
    {"required: digits and signs vanish from the keyword", "X", "#1i-f X\na\n#end.if\nb\n"sv,
     "\na\n\nb\n"sv, "X"},
    {"no name is not found", "X", "#ifdef\na\n#endif\n#if\nb\n#endif\n"sv, "\n\n\n\n\n\n"sv, ""},
    {"and so is absent", "X", "#ifndef\na\n#endif\n"sv, "\na\n\n"sv, ""},
    {"no name behind spaces", "X", "#ifdef   \na\n#endif\n"sv, "\n\n\n"sv, ""},
    {"a name is gained once", "", "#if A\n#endif\n#ifdef B\n#endif\n#ifndef A\n#endif\n"sv,
     "\n\n\n\n\n\n"sv, "A,B"},
    {"the live branch loses its indentation", "", "#ifndef A\n  b\n#endif\n  c\n"sv, "\nb\n\nc\n"sv,
     "A"},
    {"required: the other branch's first line keeps it", "",
     "#ifdef A\n#else\n  b\n  c\n#endif\n"sv, "\n\n  b\nc\n\n"sv, "A"},
    {"a line of spaces in a dead branch", "", "#ifdef A\n  \n  x\n#endif\n  c\n"sv, "\n\n\n\nc\n"sv,
     "A"},
    {"the end's own words mean nothing", "", "#ifndef A\na\n#endif A\nb\n"sv, "\na\n\nb\n"sv, "A"},
    {"nor do those of the other branch", "", "#ifdef A\na\n#else if B\nb\n#endif\n"sv,
     "\n\n\nb\n\n"sv, "A"},
    {"an end that is missing", "", "#ifdef A\na\nb"sv, "\n\n"sv, "A"},
    {"in a live branch", "", "#ifndef A\na\nb"sv, "\na\nb"sv, "A"},
    {"one behind the other", "", "#ifdef A\n#endif\n#ifndef B\nb\n#endif\n"sv, "\n\n\nb\n\n"sv,
     "A,B"},
    {"the first's outcome does not tell on the second", "",
     "#ifndef A\na\n#endif\n#ifdef B\nb\n#else\nc\n#endif\n"sv, "\na\n\n\n\n\nc\n\n"sv, "A,B"},
    {"a dropped line in a dead branch", "", "#ifdef A\n#define B\nb\n#endif\nc\n"sv,
     "\n\n\n\nc\n"sv, "A"},
    {"an included file in a dead branch", "", "#ifdef A\n#include <b>\n  b\n#endif\nc\n"sv,
     "\n\n\n\nc\n"sv, "A"},
};

constexpr DirectiveCase kAlternatives[] = {
    {"none holds", "", "#ifdef A\na\n#elif B\nb\n#endif\nz\n"sv, "\n\n\n\n\nz\n"sv, "A,B"},
    {"none holds, but for the last", "", "#ifdef A\na\n#elif B\nb\n#else\nc\n#endif\nz\n"sv,
     "\n\n\n\n\nc\n\nz\n"sv, "A,B"},
    {"the second holds", "B", "#ifdef A\na\n#elif B\nb\n#else\nc\n#endif\nz\n"sv,
     "\n\n\nb\n\n\n\nz\n"sv, "A,B"},
    {"the first holds", "A", "#ifdef A\na\n#elif B\nb\n#else\nd\n#endif\nz\n"sv,
     "\na\n\n\n\n\n\nz\n"sv, "A,B"},
    {"the first and the second hold", "A,B", "#ifdef A\na\n#elif B\nb\n#else\nd\n#endif\nz\n"sv,
     "\na\n\n\n\n\n\nz\n"sv, "A,B"},
    {"without a name", "B", "#ifdef A\na\n#elif\nb\n#else\nc\n#endif\n"sv, "\n\n\n\n\nc\n\n"sv,
     "A"},
    {"an unknown name does not make it hold", "", "#ifndef A\na\n#elif B\nb\n#endif\n"sv,
     "\na\n\n\n\n"sv, "A,B"},
    {"the live one loses its indentation", "B", "#ifdef A\n#elif B\n  b\n#endif\n"sv, "\n\nb\n\n"sv,
     "A,B"},
    {"a second that holds is not taken", "B,C", "#ifdef A\n#elif B\nb\n#elif C\nc\n#endif\nz\n"sv,
     "\n\nb\n\n\n\nz\n"sv, "A,B,C"},
    {"required: the next that holds is taken again", "B,C,D",
     "#ifdef A\n#elif B\nb\n#elif C\nc\n#elif D\nd\n#endif\n"sv, "\n\nb\n\n\n\nd\n\n"sv, "A,B,C,D"},
    {"required: so is the last one", "B",
     "#ifdef A\na\n#elif B\nb\n#elif C\nc\n#else\nd\n#endif\nz\n"sv, "\n\n\nb\n\n\n\nd\n\nz\n"sv,
     "A,B,C"},
    {"behind the other branch", "C", "#ifdef A\n#else\nb\n#elif C\nc\n#endif\n"sv,
     "\n\nb\n\n\n\n"sv, "A,C"},
    {"behind a dead other branch", "A,C", "#ifdef A\na\n#else\nb\n#elif C\nc\n#endif\n"sv,
     "\na\n\n\n\n\n\n"sv, "A,C"},
    {"a second other branch is dead", "", "#ifdef A\n#else\nb\n#else\nc\n#endif\n"sv,
     "\n\nb\n\n\n\n"sv, "A"},
    {"required: a third is live", "", "#ifdef A\n#else\nb\n#else\nc\n#else\nd\n#endif\n"sv,
     "\n\nb\n\n\n\nd\n\n"sv, "A"},
    {"none is where the first branch was live", "A",
     "#ifdef A\na\n#else\nb\n#else\nc\n#else\nd\n#endif\n"sv, "\na\n\n\n\n\n\n\n\n"sv, "A"},
};

constexpr DirectiveCase kNesting[] = {
    {"live in live", "", "#ifndef A\n#ifndef B\nb\n#endif\na\n#endif\nz\n"sv, "\n\nb\n\na\n\nz\n"sv,
     "A,B"},
    {"required: dead in live silences the rest of the outer branch", "",
     "#ifndef A\n#ifdef B\nb\n#endif\nafter\n#endif\nz\n"sv, "\n\n\n\n\n\nz\n"sv, "A,B"},
    {"what stands before it is kept", "", "#ifndef A\na\n#ifdef B\nb\n#endif\n#endif\nz\n"sv,
     "\na\n\n\n\n\nz\n"sv, "A,B"},
    {"three levels deep the silence lasts to the outermost end", "",
     "#ifndef A\n#ifndef B\n#ifdef C\nc\n#endif\nm\n#endif\nn\n#endif\nz\n"sv,
     "\n\n\n\n\n\n\n\n\nz\n"sv, "A,B,C"},
    {"unless a live branch opens", "",
     "#ifndef A\n#ifdef B\n#endif\nm\n#ifndef C\nc\n#endif\nn\n#endif\n"sv,
     "\n\n\n\n\nc\n\nn\n\n"sv, "A,B,C"},
    {"the inner other branch makes it speak again", "",
     "#ifndef A\n#ifdef B\n#else\nb\n#endif\nn\n#endif\nz\n"sv, "\n\n\nb\n\nn\n\nz\n"sv, "A,B"},
    {"the outer other branch stays dead", "",
     "#ifndef A\n#ifdef B\n#endif\n#else\nc\n#endif\nz\n"sv, "\n\n\n\n\n\nz\n"sv, "A,B"},
    {"an outer other branch lives", "",
     "#ifdef A\n#ifndef B\nb\n#endif\nm\n#else\nk\n#endif\nz\n"sv, "\n\n\n\n\n\nk\n\nz\n"sv, "A,B"},
    {"what an earlier level left behind does not matter", "",
     "#ifndef A\n#ifndef B\nb\n#endif\n#endif\n#ifdef C\n#ifndef D\nd\n#endif\n#endif\n"sv,
     "\n\nb\n\n\n\n\n\n\n\n"sv, "A,B,C,D"},
    {"a dead one in a dead one names its names", "B",
     "#ifdef A\n#ifdef B\n\n#elif C\n\n#else\nx\n#endif\n#endif\ny\n"sv, "\n\n\n\n\n\n\n\n\ny\n"sv,
     "A,B,C"},
    {"required: a dead alternative's inner condition lives", "",
     "#ifndef A\na\n#elif B\n#ifndef Q\nq\n#endif\nr\n#endif\nz\n"sv, "\na\n\n\nq\n\nr\n\nz\n"sv,
     "A,B,Q"},
    {"that of a dead other branch does not", "",
     "#ifndef A\na\n#else\n#ifndef Q\nq\n#endif\nr\n#endif\nz\n"sv, "\na\n\n\n\n\n\n\nz\n"sv,
     "A,Q"},
};

// required: the line after a condition in an inactive branch is read as a directive, whatever it
// begins with.
constexpr DirectiveCase kSwallowedLines[] = {
    {"a plain line", "", "#ifdef A\n#ifdef B\nx\n#endif\n#endif\ny\n"sv, "\n\n\n\n\ny\n"sv, "A,B"},
    {"a directive", "", "#ifdef A\n#ifdef B\n#endif\n#endif\ny\n"sv, "\n\n\n\ny\n"sv, "A,B"},
    {"a directive behind a letter is none", "", "#ifdef A\n#ifdef B\nx #endif\n#endif\ny\n"sv,
     "\n\n\n\n\n"sv, "A,B"},
    {"behind a digit it is one", "", "#ifdef A\n#ifdef B\n1 #endif\n#endif\ny\n"sv, "\n\n\n\ny\n"sv,
     "A,B"},
    {"also behind punctuation, with spaces before", "",
     "#ifdef A\n#ifdef B\n  }; #endif\n#endif\ny\n"sv, "\n\n\n\ny\n"sv, "A,B"},
    {"a bracket first is a keyword of its own", "",
     "#ifdef A\n#ifdef B\n1(#endif\n#endif\n#endif\ny\n"sv, "\n\n\n\n\ny\n"sv, "A,B"},
    {"only one line is", "", "#ifdef A\n#ifdef B\nx\n1 #endif\n#endif\ny\n"sv, "\n\n\n\n\n\n"sv,
     "A,B"},
    {"an empty line is that line", "", "#ifdef A\n#ifdef B\n\n1 #endif\n#endif\ny\n"sv,
     "\n\n\n\n\n\n"sv, "A,B"},
    {"so is a line of spaces", "", "#ifdef A\n#ifdef B\n  \n1 #endif\n#endif\ny\n"sv,
     "\n\n\n\n\n\n"sv, "A,B"},
    {"it may go on over its end", "", "#ifdef A\n#ifdef B\nfoo \\\n#endif\n#endif\n#endif\ny\n"sv,
     "\n\n\n\n\n\ny\n"sv, "A,B"},
    {"it may open a condition", "",
     "#ifdef A\n#ifdef B\n1 #ifdef C\nx\n#endif\n#endif\n#endif\ny\n"sv, "\n\n\n\n\n\n\ny\n"sv,
     "A,B,C"},
    {"behind an alternative in a dead branch too", "",
     "#ifdef A\n#ifdef B\n\n#elif C\n1 #endif\n#endif\ny\n"sv, "\n\n\n\n\n\ny\n"sv, "A,B,C"},
    {"not behind an alternative in a live branch", "",
     "#ifndef A\n#ifdef B\n\n#elif C\n1 #endif\n#endif\ny\n"sv, "\n\n\n\n\n\n\n"sv, "A,B,C"},
    {"not behind a dead condition in a live branch", "", "#ifdef A\n1 #endif\n#endif\ny\n"sv,
     "\n\n\ny\n"sv, "A"},
    {"the text may end with it", "", "#ifdef A\n#ifdef B\nx"sv, "\n\n"sv, "A,B"},
};

// An unmatched #elif, #else or #endif is dropped like an unknown directive.
constexpr DirectiveCase kStrays[] = {
    {"an end", "", "#endif\n  a\n"sv, "\na\n"sv, ""},
    {"several ends", "", "#endif\n#endif\n#endif\na\n"sv, "\n\n\na\n"sv, ""},
    {"an other branch", "", "a\n#else\n  b\n  c\n"sv, "a\n\nb\nc\n"sv, ""},
    {"an alternative, which names nothing", "", "#elif X\n  a\n"sv, "\na\n"sv, ""},
    {"one that would hold", "X", "#elif X\n  a\n#else\nb\n"sv, "\na\n\nb\n"sv, ""},
    {"behind a whole condition", "", "#ifdef A\n#endif\n#endif\nb\n#ifdef C\nc\n#endif\nd\n"sv,
     "\n\n\nb\n\n\n\nd\n"sv, "A,C"},
    {"before a condition", "", "#endif\n#else\n#elif B\n#ifndef A\na\n#else\nb\n#endif\nc\n"sv,
     "\n\n\n\na\n\n\n\nc\n"sv, "A"},
    {"a style rule that reads like one", "", "#else { }\n#endif { }\nb { }\n"sv, "\n\nb { }\n"sv,
     ""},
};

void expectSimulated(const DirectiveCase& row, std::size_t linesBefore) {
  SCOPED_TRACE(testing::Message() << row.why << ": " << testing::PrintToString(row.text)
                                  << " behind " << linesBefore << " empty lines");
  const std::string before(linesBefore, '\n');
  std::vector<std::string> defines;
  std::string output;
  const std::string printed = support::stdoutOf([&] {
    output =
        Cleaner().PreProcessorSimulation(before + std::string(row.text), names(row.known), defines);
  });
  EXPECT_EQ(output, before + std::string(row.output));
  EXPECT_EQ(defines, names(row.gained));
  EXPECT_EQ(printed, "");
  EXPECT_EQ(std::count(row.output.begin(), row.output.end(), '\n'),
            std::count(row.text.begin(), row.text.end(), '\n'));
}

// The state after an empty line is the initial state.
template <std::size_t kCount>
void expectSimulatedAnywhere(const DirectiveCase (&rows)[kCount]) {
  for (const DirectiveCase& row : rows)
    for (const unsigned linesBefore : {0U, 1U, 17U, 64U}) expectSimulated(row, linesBefore);
}

TEST(PreprocessorSimulation, PlainLines) { expectSimulatedAnywhere(kPlainLines); }
TEST(PreprocessorSimulation, DroppedLines) { expectSimulatedAnywhere(kDroppedLines); }
TEST(PreprocessorSimulation, Continuations) { expectSimulatedAnywhere(kContinuations); }
TEST(PreprocessorSimulation, Conditions) { expectSimulatedAnywhere(kConditions); }
TEST(PreprocessorSimulation, Alternatives) { expectSimulatedAnywhere(kAlternatives); }
TEST(PreprocessorSimulation, Nesting) { expectSimulatedAnywhere(kNesting); }
TEST(PreprocessorSimulation, SwallowedLines) { expectSimulatedAnywhere(kSwallowedLines); }
TEST(PreprocessorSimulation, Strays) { expectSimulatedAnywhere(kStrays); }

TEST(PreprocessorSimulation, NamesAreAppendedToTheList) {
  std::vector<std::string> defines = names("B,B,a");
  EXPECT_EQ(Cleaner().PreProcessorSimulation("#if A\n#endif\n#ifdef B\nb\n#endif\n", {}, defines),
            "\n\n\n\n\n");
  EXPECT_EQ(defines, names("B,B,a,A"));
}

// A condition without a name matches nothing, not even the empty name.
TEST(PreprocessorSimulation, NoNameIsNotTheEmptyName) {
  std::vector<std::string> defines;
  EXPECT_EQ(
      Cleaner().PreProcessorSimulation("#ifdef\na\n#endif\n#ifndef\nb\n#endif\n", {""}, defines),
      "\n\n\n\nb\n\n");
  EXPECT_TRUE(defines.empty());
}

TEST(PreprocessorSimulation, DeepNesting) {
  constexpr int kDepth = 100'000;
  std::string text;
  for (int i = 0; i < kDepth; ++i) text += "#ifndef A\n";
  text += "x\n";
  for (int i = 0; i < kDepth; ++i) text += "#endif\n";
  text += "y\n";
  std::vector<std::string> defines;
  const std::string feeds(kDepth, '\n');
  EXPECT_EQ(Cleaner().PreProcessorSimulation(text, {}, defines), feeds + "x\n" + feeds + "y\n");
  EXPECT_EQ(defines, names("A"));
}

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

struct ReportCase {
  std::string_view why;
  std::string text;
  std::string output;
  std::string report;
};

TEST(PreprocessorSimulation, ReportsEachByteOfADirectivePastTheFiftieth) {
  const std::string fifty = "#" + repeated("a", 49);
  const std::string spaces = repeated(" ", 50);
  const ReportCase kCases[] = {
      {"fifty bytes", fifty + "\n", "\n", ""},
      {"one more", fifty + "b\n", "\n", "[[" + fifty + "b]]\n"},
      {"three more", fifty + "bcd\n", "\n",
       "[[" + fifty + "b]]\n[[" + fifty + "bc]]\n[[" + fifty + "bcd]]\n"},
      {"before the line's end is known", fifty + "b", "", "[[" + fifty + "b]]\n"},
      {"bytes that are dropped do not count", fifty + "\t\r\x80\n", "\n", ""},
      {"each directive by itself", fifty + "\n" + fifty + "\n", "\n\n", ""},
      {"spaces before the number sign count", repeated(" ", 48) + "#if\n", "\n",
       "[[" + repeated(" ", 48) + "#if]]\n"},
      {"fifty spaces before a plain line", spaces + "x\n", "x\n", ""},
      {"fifty-two", spaces + "  x\n", "x\n", "[[" + spaces + " ]]\n[[" + spaces + "  ]]\n"},
      {"a long plain line", "x" + spaces + spaces + "\n", "x" + spaces + spaces + "\n", ""},
      {"a long line of spaces", spaces + " \n", "\n", "[[" + spaces + " ]]\n"},
      {"not where the indentation stays", " \n" + spaces + "  x\n", "\n" + spaces + "  x\n", ""},
      {"nor behind an included file", "#include\n" + spaces + " x\n", "\n" + spaces + " x\n", ""},
      {"all lines of a directive count",
       "#" + repeated("a", 29) + "\\\n" + repeated("b", 20) + "\nq\n", "\n\nq\n",
       "[[#" + repeated("a", 29) + "\\" + repeated("b", 20) + "]]\n"},
      {"in a dead branch too", "#if A\n" + fifty + "b\nx\n#endif\n", "\n\n\n\n",
       "[[" + fifty + "b]]\n"},
      {"a plain line that is read as a directive",
       "#if A\n#if B\n" + repeated("x", 51) + "\n#endif\n#endif\ny\n", "\n\n\n\n\ny\n",
       "[[" + repeated("x", 51) + "]]\n"},
  };
  for (const ReportCase& row : kCases) {
    SCOPED_TRACE(testing::Message() << row.why << ": " << testing::PrintToString(row.text));
    std::vector<std::string> defines;
    std::string output;
    const std::string printed = support::stdoutOf(
        [&] { output = Cleaner().PreProcessorSimulation(row.text, {}, defines); });
    EXPECT_EQ(printed, row.report);
    EXPECT_EQ(output, row.output);
  }
}

TEST(PreprocessorSimulation, ReportChangesNothingElse) {
  const std::string name = repeated("N", 46);
  std::vector<std::string> defines;
  std::string output;
  const std::string printed = support::stdoutOf([&] {
    output = Cleaner().PreProcessorSimulation(
        "#if " + name + "\n#else\nx\n#endif\n#if " + name + "M\ny\n#endif\n", {name + "M"},
        defines);
  });
  EXPECT_EQ(printed, "[[#if " + name + "M]]\n");
  EXPECT_EQ(output, "\n\nx\n\n\ny\n\n");
  EXPECT_EQ(defines, (std::vector<std::string>{name, name + "M"}));
}

}  // namespace
