// The escapes of answers, and the path that an answer names.

#include "records/answer_path.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "record_text_of.h"
#include "records/record_escapes.h"

namespace {

TEST(Escaped, IsWhatUnescapedTakesBack) {
  EXPECT_EQ(host::escaped("\"'\\\n\r\t/\x01\xff"), "\\\"\\'\\\\\\n\\r\\t/\x01\xff");
  EXPECT_EQ(host::unescaped(host::escaped("\\n\"'\n")), "\\n\"'\n");
}

TEST(Unescaped, LeavesWhatIsNoEscape) {
  struct Row {
    std::string_view text;
    std::string_view result;
  };
  for (const Row& row : {Row{"", ""}, Row{"a.js", "a.js"}, Row{R"(\"\'\\\n\r\t)", "\"'\\\n\r\t"},
                         Row{R"(\\n)", R"(\n)"}, Row{R"(\x\)", R"(\x\)"}}) {
    EXPECT_EQ(host::unescaped(row.text), row.result) << row.text;
  }
}

TEST(WithPath, ChangesThePathOfEachRecordAndNothingElse) {
  const std::string inside = R"(\",\n    \"filePath\": \"/t/a.js\",\n)";
  const auto answer = [&](const std::string& path) {
    return answerText({{.filePath = path, .contents = "/t/a.js"},
                       {.nodeId = 1, .filePath = path, .contents = inside},
                       {.nodeId = 2, .filePath = path, .simpleFunctionName = inside}});
  };
  EXPECT_EQ(host::withPath(answer("/t/a.js"), "/t/a.js", "src/a.js"), answer("src/a.js"));
  EXPECT_EQ(host::withPath(answer("/t/a.js"), "/t/a.js", "it's \"q\"\n\\a.js"),
            answer(R"(it\'s \"q\"\n\\a.js)"));
  EXPECT_EQ(host::withPath(answer(R"(/t/\"\\.js)"), "/t/\"\\.js", "\xff/\"\\.js"),
            answer("\xff/\\\"\\\\.js"));
  EXPECT_EQ(host::withPath(answer("/t/a.js.js"), "/t/a.js", "b"), answer("/t/a.js.js"));
  EXPECT_EQ(host::withPath("[\n]\n", "/t/a.js", "b"), "[\n]\n");
}

TEST(WithPath, ChangesThePathAtTheEndOfAnError) {
  EXPECT_EQ(host::withPath(R"([{"error": "File is empty: /t/\"a.js"}])", "/t/\"a.js", "'a.js"),
            R"([{"error": "File is empty: \'a.js"}])");
  for (const std::string_view other : {R"([{"error": "Parser exception: x"}])",
                                       R"([{"error": "not /t/a.js"}])", R"({"x": 1})", ""}) {
    EXPECT_EQ(host::withPath(other, "/t/a.js", "b"), other);
  }
}

}  // namespace
