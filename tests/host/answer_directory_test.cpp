// Answer files where the file system folds case, which not every machine has one of.

#include "run/answer_directory.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace {

using host::AnswerDirectory;
using Other = std::optional<std::string>;

bool folds(int) { return true; }
bool foldsNot(int) { return false; }

TEST(AnswerDirectory, KnowsWhichFilesShareAnAnswerFile) {
  const support::TempDir own;
  AnswerDirectory directory(own.path("."), ".json", folds);
  EXPECT_EQ(directory.otherOwner("src/a.js"), Other());
  EXPECT_EQ(directory.otherOwner("src/A.js"), Other("src/a.js"));
  EXPECT_EQ(directory.otherOwner("SRC/a.JS"), Other("src/a.js"));
  EXPECT_EQ(directory.otherOwner("src/a.js"), Other()) << "given twice";
  EXPECT_EQ(directory.otherOwner("src/b.js"), Other());
  EXPECT_EQ(directory.otherOwner("\xe4.js"), Other());
  EXPECT_EQ(directory.otherOwner("\xc4.js"), Other()) << "escaped";
  EXPECT_EQ(directory.otherOwner(std::string(201, 'a')), Other());
  EXPECT_EQ(directory.otherOwner(std::string(201, 'A')), Other()) << "the hashes differ";
}

TEST(AnswerDirectory, HasNoOtherOwnersWhereCaseCounts) {
  const support::TempDir own;
  AnswerDirectory directory(own.path("."), ".json", foldsNot);
  EXPECT_EQ(directory.otherOwner("a.js"), Other());
  EXPECT_EQ(directory.otherOwner("A.js"), Other());
}

TEST(AnswerDirectory, FindsOutWhetherCaseCounts) {
  const support::TempDir own;
  own.write("a", "");
  const bool isFolded = std::filesystem::exists(own.path("A"));
  std::filesystem::remove(own.path("a"));
  const int directory = ::open(own.path(".").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  EXPECT_EQ(host::foldsCase(directory), isFolded);
  ::close(directory);
  EXPECT_TRUE(std::filesystem::is_empty(own.path("."))) << "nothing is left behind";
}

}  // namespace
