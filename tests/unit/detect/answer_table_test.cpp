#include "detect/answer_table.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "detect/declarations.h"
#include "detect/flow.h"

namespace {

using detect::AnswerTable;
using detect::Statement;

Statement askedStatement() {
  Statement statement("var a = 1;");
  detect::isVariable(statement);
  detect::isLoop(statement);
  return statement;
}

TEST(AnswerTable, KnowsNothingAtFirst) {
  const AnswerTable table(5);
  for (const std::int32_t id : {-1, 0, 4, 5, 6, std::numeric_limits<std::int32_t>::max()})
    EXPECT_EQ(table.of(id).known, 0) << id;
}

TEST(AnswerTable, KeepsTheAnswersNotedForANumber) {
  AnswerTable table(5);
  table.note(7, askedStatement());
  EXPECT_EQ(table.of(7).known, askedStatement().answers().known);
  EXPECT_EQ(table.of(7).yes, askedStatement().answers().yes);
  EXPECT_EQ(table.of(6).known, 0);
  EXPECT_EQ(table.of(8).known, 0);
}

TEST(AnswerTable, IgnoresNumbersBelowItsFirst) {
  AnswerTable table(5);
  table.note(4, askedStatement());
  table.note(std::numeric_limits<std::int32_t>::min(), askedStatement());
  EXPECT_EQ(table.of(4).known, 0);
  EXPECT_EQ(table.of(std::numeric_limits<std::int32_t>::min()).known, 0);
}

TEST(AnswerTable, CountsFromItsFirstNumber) {
  const std::int32_t first = std::numeric_limits<std::int32_t>::max() - 2;
  AnswerTable table(first);
  table.note(first, askedStatement());
  table.note(first + 1, askedStatement());
  EXPECT_EQ(table.of(first).known, askedStatement().answers().known);
  EXPECT_EQ(table.of(first + 1).known, askedStatement().answers().known);
  EXPECT_EQ(table.of(first + 2).known, 0);
}

// Known answers are not recomputed: a statement given a wrong answer returns it.
TEST(Statement, TakesOverKnownAnswers) {
  Statement statement;
  statement.reset("while (a) {", askedStatement().answers());
  EXPECT_TRUE(detect::isVariable(statement));
  EXPECT_FALSE(detect::isLoop(statement));
  EXPECT_TRUE(detect::isFunction(statement)) << "which was not asked of the other one";
  statement.reset("while (a) {");
  EXPECT_FALSE(detect::isVariable(statement));
  EXPECT_TRUE(detect::isLoop(statement));
}

TEST(Statement, ReturnsPartsOneByOneOrAllAtOnce) {
  Statement statement("a = 'b';");
  ASSERT_NE(statement.part(1), nullptr);
  EXPECT_EQ(statement.part(1)->str(), "=");
  EXPECT_TRUE(statement.partIs(0, "a"));
  EXPECT_EQ(statement.part(4), nullptr);
  ASSERT_EQ(statement.parts().size(), 4U);
  EXPECT_EQ(statement.parts()[2].str(), "''b'");
  EXPECT_EQ(statement.part(3)->str(), ";");
}

}  // namespace
