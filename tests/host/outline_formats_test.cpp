// The formats that stand on the outline: outline, columns, ctags, etags, and the ranges of json and
// ndjson.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "quorl_js_fixture.h"

namespace {

using host_test::contentsOf;
using host_test::Outcome;
using host_test::Words;
using host_test::writeFile;

const std::string kHeader =
    "!_TAG_FILE_FORMAT\t2\t/extended format/\n"
    "!_TAG_FILE_SORTED\t1\t/0=unsorted, 1=sorted, 2=foldcase/\n"
    "!_TAG_PROGRAM_NAME\tquorl-js\t//\n"
    "!_TAG_PROGRAM_VERSION\t" QUORL_VERSION "\t//\n";

class OutlineFormats : public host_test::QuorlJs {
 protected:
  OutlineFormats() {
    writeFile("view.js",
              "let count = 0;\n"             // 1
              "class View extends Base {\n"  // 2
              "  size = 1;\n"                // 3
              "  render(a,\n"                // 4
              "         b = ')') {\n"        // 5
              "    let inner = a;\n"         // 6
              "  }\n"                        // 7
              "}\n"                          // 8
              "const twice = x => {\n"       // 9
              "  if (x) {\n"                 // 10
              "    return 2;\n"              // 11
              "  }\n"                        // 12
              "};\n");                       // 13
  }

  static std::string outOf(const Words& arguments) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
};

using OutlineFormat = OutlineFormats;
using ColumnsFormat = OutlineFormats;
using Tags = OutlineFormats;
using Ranges = OutlineFormats;

// ---- outline

TEST_F(OutlineFormat, ListsDefinitionsAsTheSourceNestsThem) {
  EXPECT_EQ(outOf({"view.js", "--format=outline"}),
            "view.js\n"
            "            1 variable     count\n"
            "          2-8 class        View extends Base\n"
            "          4-7 method         render(a, b = ')')\n"
            "         9-13 function     twice(x)\n");
}

TEST_F(OutlineFormat, ListsTheKindsThatOnlyNames) {
  EXPECT_EQ(outOf({"view.js", "--format=outline", "--only=variable,logic", "--only", "field"}),
            "view.js\n"
            "            1 variable     count\n"
            "            3 field        size\n"
            "            6 variable     inner\n"
            "        10-12 logic        if (x) {\n");
  EXPECT_EQ(
      run({"view.js", "--format=outline", "--only=metod"}),
      (Outcome{2, "",
               "quorl-js: --only: invalid value 'metod'; did you mean method? (one of function, "
               "method, constructor, getter, setter, class, interface, enum, namespace, type, "
               "variable, field, module, callback, logic, loop, statement, element, link, "
               "script, block)\n"}));
}

TEST_F(OutlineFormat, NestsBelowTheNearestItemThatIsListed) {
  writeFile("deep.js", "function a() {\n  if (b) {\n    function c() {\n    }\n  }\n}\n");
  EXPECT_EQ(outOf({"deep.js", "--format=outline"}),
            "deep.js\n"
            "          1-6 function     a()\n"
            "          3-4 function       c()\n");
}

TEST_F(OutlineFormat, HasAsManyLevelsAsDepthSays) {
  EXPECT_EQ(outOf({"view.js", "--format=outline", "--depth=0"}), "view.js\n");
  EXPECT_EQ(outOf({"view.js", "--format=outline", "--depth=1", "--only=class,method"}),
            "view.js\n          2-8 class        View extends Base\n");
}

TEST_F(OutlineFormat, HasColorsWhereTheyAreAskedFor) {
  EXPECT_EQ(
      outOf({"view.js", "--format=outline", "--only=class", "--color=always"}),
      "\x1b[1mview.js\x1b[0m\n"
      "          \x1b[2m2-8\x1b[0m \x1b[33mclass\x1b[0m        \x1b[1mView\x1b[0m extends Base\n");
}

TEST_F(OutlineFormat, TellsOfFilesWithoutAnOutline) {
  writeFile("empty.js", "");
  const Outcome outcome =
      run({"empty.js", "gone.js", "view.js", "--format=outline", "--only=type"});
  EXPECT_EQ(
      outcome,
      (Outcome{1, "empty.js: empty\n\ngone.js: failed: No such file or directory\n\nview.js\n",
               "quorl-js: gone.js: No such file or directory\n"}));
}

TEST_F(OutlineFormat, ShowsWhatAnAnswerLacks) {
  const Outcome outcome = runOdd({"x", "--format=outline"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.out.starts_with("x\nx: unreadable: the answer leaves the record format"))
      << outcome;
}

// ---- columns

// A private method has no record.
TEST_F(ColumnsFormat, HasEveryItem) {
  writeFile("a.js", "class A {\n  #b() {\n    c();\n  }\n}\n");
  EXPECT_EQ(outOf({"a.js", "--format=columns"}),
            "{\"type\":\"header\",\"schema\":1,\"tool\":\"quorl-js\",\"version\":\"" QUORL_VERSION
            "\",\"fileCount\":1}\n"
            R"({"type":"file","file":0,"path":"a.js","status":"answered","message":null,)"
            R"("sourceBytes":34,"microseconds":null,"omitted":null,"items":{"item":[0,1,2],)"
            R"("container":[null,0,1],"line":[1,2,3],"endLine":[5,4,3],)"
            R"("kind":["class","method","statement"],"name":["A","#b",""],"nodeID":[3,null,4],)"
            R"("branchTypeAsString":["class",null,"line"],)"
            R"("contents":["class A {",null,"c();"]}})"
            "\n");
}

TEST_F(ColumnsFormat, KeepsTheNumbersOfTheKindsThatAreAskedFor) {
  const std::string text = outOf({"view.js", "--format=columns", "--only=logic,method"});
  EXPECT_NE(text.find(R"("items":{"item":[3,7],"container":[1,6],"line":[4,10],"endLine":[7,12],)"
                      R"("kind":["method","logic"],"name":["render",""],)"),
            std::string::npos)
      << text;
}

TEST_F(ColumnsFormat, IsNoShard) {
  writeFile("columns", outOf({"view.js", "--format=columns"}));
  EXPECT_EQ(run({"merge", "columns"}),
            (Outcome{2, "", "quorl-js: columns: line 2: a file without recordCount\n"}));
}

// ---- tags

TEST_F(Tags, AreSortedLinesForCtags) {
  EXPECT_EQ(outOf({"view.js", "--format=ctags"}),
            kHeader +
                "View\tview.js\t2;\"\tkind:c\tline:2\tend:8\n"
                "count\tview.js\t1;\"\tkind:v\tline:1\tend:1\n"
                "render\tview.js\t4;\"\tkind:m\tline:4\tclass:View\tend:7\n"
                "size\tview.js\t3;\"\tkind:v\tline:3\tclass:View\tend:3\n"
                "twice\tview.js\t9;\"\tkind:f\tline:9\tend:13\n");
}

TEST_F(Tags, AreSectionsForEtags) {
  EXPECT_EQ(outOf({"view.js", "--format=etags", "--only=class,method,function"}),
            "\x0c\nview.js,66\n"
            "class View\x7fView\x01"
            "2,15\n"
            "  render\x7frender\x01"
            "4,53\n"
            "const twice\x7ftwice\x01"
            "9,110\n");
}

TEST_F(Tags, CountCharactersForEmacs) {
  writeFile("a.js", "// \xc3\xa9\r\n// b\r\nfunction f() {\r\n}\r\n");
  EXPECT_EQ(outOf({"a.js", "--format=etags"}),
            "\x0c\na.js,18\nfunction f\x7f"
            "f\x01"
            "3,10\n");
}

TEST_F(Tags, OfAllFilesAreSortedTogether) {
  writeFile("a.js", "function z() {\n}\nfunction same() {\n}\n");
  writeFile("b.js", "function same() {\n}\nfunction Z() {\n}\n");
  for (const char* jobs : {"1", "2", "5"}) {
    EXPECT_EQ(outOf({"a.js", "b.js", "--format=ctags", "-j", jobs, "--only=function"}),
              kHeader +
                  "Z\tb.js\t3;\"\tkind:f\tline:3\tend:4\n"
                  "same\ta.js\t3;\"\tkind:f\tline:3\tend:4\n"
                  "same\tb.js\t1;\"\tkind:f\tline:1\tend:2\n"
                  "z\ta.js\t1;\"\tkind:f\tline:1\tend:2\n");
  }
  EXPECT_EQ(outOf({"a.js", "a.js", "--format=ctags"}), outOf({"a.js", "--format=ctags"}))
      << "each line once";
}

TEST_F(Tags, NameFilesFromTheFolderOfTheTagsFile) {
  namespace fs = std::filesystem;
  fs::create_directories("src/tags");
  fs::create_directory_symlink("src", "link");
  writeFile("src/a.js", "function f() {\n}\n");
  const std::string rest = "\t1;\"\tkind:f\tline:1\tend:2\n";
  const auto tagsOf = [](const std::string& file, const std::string& tags) {
    EXPECT_EQ(outOf({file, "--format=ctags", "-o", tags}), "");
    return contentsOf(tags);
  };
  EXPECT_EQ(tagsOf("src/a.js", "tags"), kHeader + "f\tsrc/a.js" + rest);
  EXPECT_EQ(tagsOf("./src/a.js", "tags"), kHeader + "f\tsrc/a.js" + rest);
  EXPECT_EQ(tagsOf("src/a.js", "src/tags/tags"), kHeader + "f\t../a.js" + rest);
  EXPECT_EQ(tagsOf((directory() / "src/a.js").string(), "src/tags/tags"),
            kHeader + "f\t../a.js" + rest);
  EXPECT_EQ(tagsOf("link/a.js", "tags"), kHeader + "f\tlink/a.js" + rest);
  EXPECT_EQ(tagsOf("src/tags/../a.js", "tags"), kHeader + "f\tsrc/a.js" + rest);
  EXPECT_EQ(outOf({"src/a.js", "--format=etags", "--out-dir=src/tags"}), "");
  EXPECT_EQ(contentsOf("src/tags/src%2Fa.js.etags"),
            "\x0c\n../a.js,17\nfunction f\x7f"
            "f\x01"
            "1,0\n");
}

TEST_F(Tags, LeaveOutWhatNoTagsFileCanHold) {
  writeFile("a.js", "const o = {\n  '!x': function () {\n  },\n  'a b'() {\n  },\n};\n");
  EXPECT_EQ(outOf({"a.js", "--format=ctags", "--only=method,function"}),
            kHeader + "a b\ta.js\t4;\"\tkind:m\tline:4\tend:5\n");
  writeFile("tab\t.js", "function f() {\n}\n");
  const Outcome outcome = run({"tab\t.js", "--format=etags"});
  EXPECT_EQ(outcome,
            (Outcome{1, "", "quorl-js: tab\\x09.js: its name does not fit into a tags file\n"}));
}

TEST_F(Tags, AreOnlyHeadersWithoutFiles) {
  writeFile("empty.js", "");
  EXPECT_EQ(outOf({"empty.js", "--format=ctags"}), kHeader);
  EXPECT_EQ(outOf({"empty.js", "--format=etags"}), "");
}

// ---- ranges

TEST_F(Ranges, StandInEachRecord) {
  const std::string plain = outOf({"view.js", "--format=ndjson"});
  const std::string text = outOf({"view.js", "--format=ndjson", "--ranges"});
  const auto valueOf = [&text](const std::string& contents) {
    const std::size_t record = text.find("\"contents\":\"" + contents);
    const std::size_t begin = text.find("\"source\":", record);
    return text.substr(begin + 9, text.find('\n', begin) - begin - 10);
  };
  EXPECT_EQ(valueOf("view.js"), "null");
  EXPECT_EQ(valueOf("let count"),
            R"({"line":1,"endLine":1,"kind":"variable","name":"count","parent":null,)"
            R"("item":0,"container":null})");
  EXPECT_EQ(valueOf("class View"),
            R"({"line":2,"endLine":8,"kind":"class","name":"View","parent":null,)"
            R"("item":1,"container":null})");
  EXPECT_EQ(valueOf("let inner"),
            R"({"line":6,"endLine":6,"kind":"variable","name":"inner","parent":7,)"
            R"("item":5,"container":4})");
  std::string without;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = text.find(",\"source\":", at);
    without += text.substr(at, begin - at);
    if (begin == std::string::npos) break;
    at = text.find('\n', begin) - 1;
  }
  const std::size_t others = without.find(",\"unrecorded\":[]}");
  ASSERT_NE(others, std::string::npos) << without;
  without.erase(others, without.size() - others - 2);
  EXPECT_EQ(without, plain) << "nothing else changes";
}

// A private method has no record; its number and that of the class are those of the outline.
TEST_F(Ranges, ListItemsWithoutARecord) {
  writeFile("a.js", "class A {\n  #b() {\n    c();\n  }\n}\n");
  const std::string item =
      R"({"line":2,"endLine":4,"kind":"method","name":"#b","parent":3,"item":1,"container":0})";
  const std::string inside =
      R"("source":{"line":3,"endLine":3,"kind":"statement","name":"","parent":3,"item":2,)"
      R"("container":1}})";
  for (const std::string format : {"json", "ndjson"}) {
    const std::string text = outOf({"a.js", "--format=" + format, "--ranges"});
    EXPECT_NE(text.find(",\"unrecorded\":[" + item + "]}"), std::string::npos) << text;
    EXPECT_NE(text.find(inside), std::string::npos) << text;
  }
}

TEST_F(Ranges, StandInJsonToo) {
  writeFile("a.js", "f();\n");
  const std::string text = outOf({"a.js", "--format=json", "--ranges"});
  EXPECT_NE(text.find(R"("calloutIDs":[],"source":{"line":1,"endLine":1,"kind":"statement",)"
                      R"("name":"","parent":null,"item":0,"container":null}}],"unrecorded":[]})"),
            std::string::npos)
      << text;
}

TEST_F(Ranges, AreForJsonOnly) {
  EXPECT_EQ(
      run({"view.js", "--ranges"}),
      (Outcome{2, "", "quorl-js: --ranges: not with --format raw; use --format json or ndjson\n"}));
  EXPECT_EQ(
      run({"view.js", "--format=ctags", "--depth=1"}),
      (Outcome{2, "",
               "quorl-js: --depth: not with --format ctags; use --format json, ndjson, tree or "
               "outline\n"}));
  EXPECT_EQ(run({"view.js", "--format=columns", "--ranges"}),
            (Outcome{2, "",
                     "quorl-js: --ranges: not with --format columns; use --format json or "
                     "ndjson\n"}));
}

TEST_F(Ranges, PassThroughMerge) {
  const std::string shard = outOf({"view.js", "--format=ndjson", "--ranges"});
  writeFile("shard", shard);
  EXPECT_EQ(outOf({"merge", "shard"}), shard);
}

}  // namespace
