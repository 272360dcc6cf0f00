#include "cli/suggestion.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

TEST(Suggestion, IsTheNearestWord) {
  struct Row {
    const char* word;
    std::vector<std::string_view> candidates;
    const char* nearest;
  };
  const std::vector<std::string_view> formats = {"raw", "json", "ndjson", "tree"};
  const std::vector<Row> rows = {
      {"jsno", formats, "json"},   // two letters swapped
      {"jso", formats, "json"},    // one missing
      {"jsonn", formats, "json"},  // one too many
      {"jsan", formats, "json"},   // one wrong
      {"JSON", formats, "json"},   // case
      {"njson", formats, "json"},  // as near as ndjson, which comes later
      {"ndjsno", formats, "ndjson"},
      {"ndjs", formats, "ndjson"},  // two mistakes in six letters
      {"rw", formats, "raw"},
      {"ray", formats, "raw"},
      {"xay", formats, ""},
      {"xml", formats, ""},
      {"", formats, ""},
      {"json", {}, ""},
      {"--recursve", {"--recursive", "--strict"}, "--recursive"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(host::nearest(row.word, row.candidates), row.nearest) << row.word;
  }
  EXPECT_EQ(host::nearest(std::string(1'000'000, 'j'), formats), "");
  EXPECT_EQ(host::suggestion("jsno", formats), "; did you mean json?");
  EXPECT_EQ(host::suggestion("xml", formats), "");
}

}  // namespace
