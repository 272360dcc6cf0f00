// Holds the function test, which passes over its parts once, against the plain reading of its
// rules, which looks again from every part.
#include "detect/declarations.h"

#include <cstddef>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "text/parts_list.h"

namespace {

using Parts = std::vector<std::string>;

bool commaRule(const Parts& parts) {
  for (std::size_t i = 0; i + 2 <= parts.size(); ++i) {
    if (parts[i] != ",") continue;
    if (parts[i + 1] == "function") return true;
    if (i + 2 < parts.size() && parts[i + 1] == "async" && parts[i + 2] == "function") return true;
  }
  return false;
}

bool assignmentRule(const Parts& parts) {
  for (std::size_t i = 0; i + 2 <= parts.size(); ++i) {
    if (parts[i] != "=") continue;
    if (i > 0 &&
        (parts[i - 1] == "=" || parts[i - 1] == "!" || parts[i - 1] == ">" || parts[i - 1] == "<"))
      continue;
    if (parts[i + 1] == "(") {
      for (std::size_t j = i + 2; j + 2 <= parts.size(); ++j)
        if (parts[j] == ")" && parts[j + 1] == "=>") return true;
    }
    if (parts[i + 1] == "async" && i + 2 < parts.size() && parts[i + 2] == "(") return true;
  }
  return false;
}

bool bodyRule(const Parts& parts) {
  std::size_t opening = 0;
  while (opening < parts.size() && parts[opening] != "(") ++opening;
  if (opening == 0 || opening + 1 >= parts.size()) return false;
  if (opening >= 2 && parts[opening - 2] == ".") return false;
  for (std::size_t j = opening + 1; j < parts.size(); ++j) {
    if (parts[j] != ")") continue;
    for (std::size_t k = j + 1; k < parts.size(); ++k) {
      if (parts[k] == "{") return true;
      if (parts[k] == ";") return false;
    }
  }
  return false;
}

bool isFunctionPlainly(const std::string& text) {
  Parts parts;
  PartsList(text, parts);
  if (parts.empty()) return false;
  if (parts[0] == "function") return true;
  if (parts.size() > 1 && parts[0] == "async" && parts[1] == "function") return true;
  if (parts.size() > 1 && parts[0] == "export" && parts[1] == "function") return true;
  if (parts.size() > 2 && parts[0] == "export" && parts[1] == "async" && parts[2] == "function")
    return true;
  return commaRule(parts) || assignmentRule(parts) || bodyRule(parts);
}

constexpr std::string_view kWords[] = {"(", ")", "{",     ";",        "=",      "=>", ",",
                                       ".", "a", "async", "function", "export", "<",  "\")\""};

TEST(DetectJSFunctionDeclaration, EqualsThePlainReadingOfShortStatements) {
  std::vector<std::string> shorter{""};
  for (int length = 1; length <= 4; ++length) {
    std::vector<std::string> texts;
    for (const std::string& text : shorter)
      for (const std::string_view word : kWords) texts.push_back(text + " " + std::string(word));
    for (const std::string& text : texts)
      ASSERT_EQ(DetectJSFunctionDeclaration(text), isFunctionPlainly(text)) << text;
    shorter.swap(texts);
  }
}

TEST(DetectJSFunctionDeclaration, EqualsThePlainReadingOfRandomStatements) {
  std::mt19937 random(20240301);
  std::uniform_int_distribution<int> length(5, 16);
  std::uniform_int_distribution<std::size_t> word(0, std::size(kWords) - 1);
  int functions = 0;
  for (int round = 0; round < 50000; ++round) {
    std::string text = "a";
    for (int left = length(random); left > 0; --left) text.append(" ").append(kWords[word(random)]);
    const bool expected = isFunctionPlainly(text);
    functions += expected ? 1 : 0;
    ASSERT_EQ(DetectJSFunctionDeclaration(text), expected) << text;
  }
  EXPECT_GT(functions, 1000) << "the statements must show both answers";
  EXPECT_LT(functions, 49000);
}

}  // namespace
