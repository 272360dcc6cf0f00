// One directive line: its words, and whether it opens an active branch.

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "cleaner/cleaner.h"
#include "support/names.h"

namespace {

using std::string_view_literals::operator""sv;
using support::names;

struct StateCase {
  std::string_view line;
  std::int32_t previousState;
  std::string_view known;
  bool live;
};

constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

constexpr StateCase kStates[] = {
    {"", 1, "", false},
    {"foo", 1, "foo", false},
    {"   ", 0, "", false},
    {"123", 0, "123", false},

    {"#include <a.h>", 0, "", true},
    {"#include", 1, "", true},
    {"#define A 1", 0, "", true},
    {"#define", 1, "", true},
    {"#undef A", 1, "A", false},
    {"#pragma once", 0, "once", false},
    {"#endif", 0, "", false},
    {"#", 0, "", false},
    {"#error", 1, "", false},

    {"#ifdef X", 0, "X", true},
    {"#ifdef X", 1, "X", true},
    {"#ifdef X", 1, "W,X", true},
    {"#ifdef X", 1, "", false},
    {"#ifdef X", 1, "x,XX,X ", false},
    {"  #  ifdef   X  ", 1, "X", true},
    {"#ifdef X Y", 1, "X,Y", false},
    {"#ifdef X Y", 1, "X Y", true},
    {"#ifdef", 1, "X", false},
    {"#ifdef MACOS", 1, "", false},
    {"#IFDEF X", 1, "X", false},

    {"#ifndef X", 0, "", true},
    {"#ifndef X", 1, "X", false},
    {"#ifndef X", 1, "Y", true},
    {"#ifndef", 1, "X", true},
    {"#ifndef MACOS", 1, "", true},

    {"#if X", 0, "X", true},
    {"#if X", 1, "", false},
    {"#if 1", 1, "", false},
    {"#if 1", 1, "1", true},
    {"#if defined(X)", 1, "X", false},
    {"#if defined(X)", 1, "defined(X)", true},
    {"#if(X)", 1, "X", false},
    {"#if(X)", 1, "(X)", true},
    {"#if !X", 1, "", false},
    {"#if", 1, "X", false},

    {"#elif X", 0, "X", true},
    {"#elif X", 0, "", false},
    {"#elif X", 1, "X", false},
    {"#elif X", 2, "X", false},
    {"#elif X", -2, "X", false},
    {"#elif X", kMost, "X", false},
    {"#elif", 0, "X", false},

    {"#else", 0, "", true},
    {"#else X", 0, "", true},
    {"#else", 1, "", false},
    {"#else", 2, "", false},
    {"#else", -2, "", false},

    // Only -1 makes every answer false.
    {"#include <a.h>", -1, "", false},
    {"#define A", -1, "", false},
    {"#ifdef X", -1, "X", false},
    {"#ifndef X", -1, "", false},
    {"#if X", -1, "X", false},
    {"#elif X", -1, "X", false},
    {"#else", -1, "", false},
    {"#ifdef X", -2, "X", true},
    {"#ifndef X", kLeast, "", true},
    {"#if X", kMost, "X", true},
};

TEST(PreprocessorDirective, LiveBranches) {
  for (const StateCase& row : kStates) {
    SCOPED_TRACE(testing::Message() << testing::PrintToString(row.line) << " after "
                                    << row.previousState << " with " << row.known);
    EXPECT_EQ(Cleaner().GetPreProcessorDirectiveActiveState(std::string(row.line),
                                                            row.previousState, names(row.known)),
              row.live);
  }
}

TEST(PreprocessorDirective, NoNameIsNotTheEmptyName) {
  Cleaner cleaner;
  EXPECT_FALSE(cleaner.GetPreProcessorDirectiveActiveState("#ifdef", 1, {""}));
  EXPECT_FALSE(cleaner.GetPreProcessorDirectiveActiveState("#if", 1, {""}));
  EXPECT_FALSE(cleaner.GetPreProcessorDirectiveActiveState("#elif", 0, {""}));
  EXPECT_TRUE(cleaner.GetPreProcessorDirectiveActiveState("#ifndef", 1, {""}));
}

struct PartsCase {
  std::string_view why;
  std::string_view line;
  std::vector<std::string> parts;
};

TEST(PreprocessorDirective, Parts) {
  const PartsCase kCases[] = {
      {"a definition", "#define FOO 1", {"#define", "FOO 1"}},
      {"a condition", "#ifdef FOO", {"#ifdef", "FOO"}},
      {"an indented one", "  #if A", {"#if", "A"}},
      {"a space behind the number sign", "# if X", {"#if", "X"}},
      {"spaces everywhere", "#  ifdef  Y ", {"#ifdef", "Y"}},
      {"a bracket in the argument", "#if defined(FOO)", {"#if", "defined(FOO)"}},
      {"a bracket right behind the keyword", "#if(X)", {"#if", "(X)"}},
      {"the argument is one part", "#if A && B", {"#if", "A && B"}},
      {"a path", "#include <a.h>", {"#include", "<a.h>"}},
      {"a macro with arguments", "#define F(x) y", {"#define", "F(x) y"}},
      {"a keyword alone", "#endif", {"#endif"}},
      {"signs vanish from the keyword", "#!/usr/bin/env node", {"#usrbinenv", "node"}},
      {"spaces before the first letter vanish", "#x = 1;", {"#x", "=1;"}},
      {"no number sign", "foo", {}},

      {"no text", "", {}},
      {"a number sign alone", "#", {"#"}},
      {"with a space", "# ", {"#"}},
      {"spaces alone", "   ", {}},
      {"digits alone", "123", {}},
      {"a letter before the number sign", "x#if A", {}},
      {"a space and a letter before it", "; x #if A", {}},
      {"a digit before it", "1#if A", {"#if", "A"}},
      {"punctuation and a space before it", "; #if A", {"#if", "A"}},
      {"digits vanish from the keyword", "#i1f2 A", {"#if", "A"}},
      {"digits alone behind the number sign", "#1 2 3", {"#"}},
      {"a digit and a name", "#1 A", {"#A"}},
      {"a tab is no space", "#if\tA", {"#ifA"}},
      {"a letter outside ASCII vanishes", "#\xE9if A", {"#if", "A"}},
      {"two number signs", "## if", {"##", "if"}},
      {"a number sign within the keyword", "#if#def A", {"#if#def", "A"}},
      {"the first space behind a letter ends the keyword", "# i f X", {"#i", "f X"}},
      {"spaces behind the keyword", "#if   ", {"#if"}},
      {"spaces behind the argument", "#if X  ", {"#if", "X"}},
      {"spaces within the argument", "#if X  Y", {"#if", "X  Y"}},
      {"spaces between digits vanish", "#if 1 2 A 3 4", {"#if", "12A 3 4"}},
      {"a bracket keeps the spaces behind it", "#if 1 (2 3)", {"#if", "1(2 3)"}},
      {"a sign before the name", "#if ! A", {"#if", "!A"}},
      {"an underline is no letter", "#ifdef _ X", {"#ifdef", "_X"}},
      {"a bracket after a space", "#if (X)", {"#if", "(X)"}},
      {"an open bracket alone", "#if(", {"#if", "("}},
      {"a sign before the bracket", "#if!(X)", {"#if", "(X)"}},
      {"a bracket behind the number sign vanishes", "#(", {"#"}},
      {"of two the second is the argument", "#((", {"#", "("}},
      {"required: a keyword may be empty", "1(X)", {"", "(X)"}},
      {"also before a bracket alone", "((", {"", "("}},
      {"a single bracket gives nothing", "(", {}},
      {"a letter before a bracket gives nothing", "a(X)", {}},
      {"required: an argument of one tab is an empty part", "#if \t", {"#if", ""}},
      {"an odd byte in the argument", "#if \xE9 X", {"#if", "\xE9X"}},
  };
  for (const PartsCase& row : kCases) {
    SCOPED_TRACE(testing::Message() << row.why << ": " << testing::PrintToString(row.line));
    std::vector<std::string> parts;
    Cleaner().CleanerPartsList(std::string(row.line), parts);
    EXPECT_EQ(parts, row.parts);
  }
}

TEST(PreprocessorDirective, PartsKeepNulInTheArgumentOnly) {
  std::vector<std::string> parts;
  Cleaner().CleanerPartsList(std::string("#i\0f \0X"sv), parts);
  EXPECT_EQ(parts, (std::vector<std::string>{"#if", std::string("\0X"sv)}));
}

}  // namespace
