// Paths up to the longest that the system opens, and beyond: each record repeats its path, and so
// does an error text.
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "reliability/parse.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestPath = PATH_MAX - 1;
static_assert(kLongestPath == 4'095);

class PathLength : public testing::TestWithParam<const char*> {
 protected:
  PathLength() { fs::current_path(folder_.path(".")); }
  ~PathLength() override { fs::current_path(before_); }

  const fs::path before_ = fs::current_path();
  const support::TempDir folder_;
};

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

// The answer for the file of a short path, if it had the long one.
std::string answerWithPath(const std::string& shortPath, const std::string& longPath) {
  std::string answer = reliability::parse(shortPath).value_or("(null)");
  replaceAll(answer, "\"filePath\": \"" + shortPath + "\"", "\"filePath\": \"" + longPath + "\"");
  return answer;
}

std::string errorFor(const std::string& path) {
  return "[{\"error\": \"Could not open file: " + path + "\"}]";
}

constexpr std::string_view kText = "function f(a) {\n  return a;\n}\nlet b = 1;\n";

// "./././a.js" of that many bytes, or "././/a.js".
std::string dottedPath(const std::string& name, std::size_t bytes) {
  std::string path;
  while (path.size() + 2 + name.size() <= bytes) path += "./";
  if (path.size() + name.size() < bytes) path += "/";
  return path + name;
}

TEST_P(PathLength, OfManyDots) {
  const std::string name = GetParam();
  folder_.write(name, kText);
  const std::string path = dottedPath(name, kLongestPath);
  ASSERT_EQ(path.size(), kLongestPath);
  EXPECT_EQ(reliability::parse(path), answerWithPath(name, path));
}

TEST_P(PathLength, OfNestedFolders) {
  const std::string name = GetParam();
  std::string folder;
  while (folder.size() + 256 + name.size() < kLongestPath) folder += std::string(255, 'd') + "/";
  const std::size_t rest = kLongestPath - name.size() - folder.size();
  folder += std::string(rest - 1, 'e') + "/";
  const std::string path = folder + name;
  ASSERT_EQ(path.size(), kLongestPath);
  fs::create_directories(folder);
  std::ofstream(path) << kText;
  folder_.write(name, kText);
  EXPECT_EQ(reliability::parse(path), answerWithPath(name, path));
}

TEST_P(PathLength, TooLong) {
  const std::string name = GetParam();
  folder_.write(name, kText);
  for (const std::size_t bytes : {kLongestPath + 1, std::size_t{100'000}}) {
    const std::string path = dottedPath(name, bytes);
    ASSERT_EQ(path.size(), bytes);
    EXPECT_EQ(reliability::parse(path), errorFor(path));
  }
}

TEST_P(PathLength, OfAFileThatIsMissing) {
  const std::string path = dottedPath(GetParam(), kLongestPath);
  EXPECT_EQ(reliability::parse(path), errorFor(path));
}

std::string routeName(const testing::TestParamInfo<const char*>& info) { return info.param + 2; }

INSTANTIATE_TEST_SUITE_P(Routes, PathLength, testing::Values("a.js", "a.html", "a.txt"), routeName);

}  // namespace
