// What is said of files that the module does not read whole.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "quorl_js_fixture.h"

namespace {

using host_test::Outcome;
using host_test::writeFile;

class LeftOut : public host_test::QuorlJs {
 protected:
  LeftOut() {
    writeFile("min.js", "f();\n" + std::string(78'110, 'a') + "\ng();\n");
    writeFile("a.js", "f();\n");
    writeFile("prose.md", "One\nit's two\nthree\n");
  }

  static constexpr const char* kMinified =
      "quorl-js: min.js: 1 of 3 lines left out (78,110 of 78,121 bytes): longer than 10,000 "
      "bytes\n";
};

TEST_F(LeftOut, IsWarnedOfInEveryFormat) {
  for (const char* format : {"raw", "json", "ndjson", "tree"}) {
    const Outcome outcome = run({"a.js", "min.js", "--format", format});
    EXPECT_EQ(outcome.status, 0) << format;
    EXPECT_EQ(outcome.err, kMinified) << format;
  }
}

TEST_F(LeftOut, IsNoWarningWhereNothingIs) { EXPECT_EQ(run({"a.js", "--strict"}).err, ""); }

TEST_F(LeftOut, IsAFailureWithStrict) {
  const Outcome outcome = run({"min.js", "--strict"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, kMinified);
  EXPECT_EQ(run({"min.js", "--strict", "--quiet", "--format=tree"}),
            (Outcome{1, run({"min.js", "--format=tree"}).out, ""}));
}

TEST_F(LeftOut, IsSilentWithQuiet) {
  const Outcome outcome = run({"min.js", "--quiet"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

TEST_F(LeftOut, IsNamedForAFileOfOtherTextThatIsNamed) {
  EXPECT_EQ(run({"prose.md", "--format=tree"}).err,
            "quorl-js: prose.md: reading stopped early: last record on line 1 of 3\n");
}

TEST_F(LeftOut, IsOnlyAKeyForOtherTextInAWalk) {
  const Outcome prose =
      run({"-r", ".", "--include=prose.md", "--strict", "--format=ndjson", "--only=define"});
  EXPECT_EQ(prose.status, 0);
  EXPECT_EQ(prose.err, "");
  EXPECT_NE(prose.out.find(R"("omitted":[{"reason":"stopped-early","line":1,)"), std::string::npos)
      << prose;
  const Outcome outcome = run({"-r", ".", "--strict", "--format=tree"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "quorl-js: ./min.js: 1 of 3 lines left out (78,110 of 78,121 bytes): longer than "
            "10,000 bytes\n");
}

TEST_F(LeftOut, IsAKeyOfTheFile) {
  const Outcome outcome = run({"min.js", "-q", "--format=ndjson"});
  EXPECT_NE(
      outcome.out.find(R"("omitted":[{"reason":"long-lines","line":2,"lines":1,"lineCount":3,)"
                       R"("bytes":78110,"byteCount":78121}],"recordCount":5})"),
      std::string::npos)
      << outcome;
  EXPECT_NE(run({"a.js", "--format=ndjson"}).out.find(R"("omitted":null,"recordCount":4})"),
            std::string::npos);
}

TEST_F(LeftOut, PassesThroughMerge) {
  const Outcome shard = run({"min.js", "a.js", "--format=ndjson", "-q"});
  writeFile("shard", shard.out);
  EXPECT_EQ(run({"merge", "shard"}), (Outcome{0, shard.out, ""}));
}

}  // namespace
