#include "text/file_names.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

struct PathCase {
  std::string_view path;
  std::string_view result;
  std::string_view why = "";
};

TEST(GetFileExtension, Table) {
  constexpr PathCase kCases[] = {
      {"a/b.min.js", "js"},
      {"noext", ""},
      {"name.", "", "a final dot yields an empty extension"},
      {".js", "js", "a leading dot counts"},
      {"dir.d/file", "d/file", "required: directories are not stripped first"},
      {"dir.d\\file", "d\\file", "required: directories are not stripped first"},
      {"dir.d/file.js", "js"},
      {"", ""},
      {".", ""},
      {"..", ""},
      {"a..js", "js"},
      {"a.js.", ""},
      {"a.JS", "JS", "letter case stays"},
      {"a. js", " js", "nothing is trimmed"},
      {"a.j\0s"sv, "j\0s"sv, "NUL is a byte like any other"},
      {"a.\xC3\xA9", "\xC3\xA9"},
  };
  for (const PathCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.path) + " " + std::string(row.why));
    EXPECT_EQ(GetFileExtension(std::string(row.path)), row.result);
  }
}

struct KindCase {
  std::string_view path;
  bool page;
  bool script;
  std::string_view why = "";
};
constexpr KindCase kKindCases[] = {
    {"page.html", true, false},
    {"page.htm", true, false},
    {"page.xhtml", true, false},
    {"page.php", true, false},
    {"a.js", false, true},
    {"a.jsx", false, true},
    {"a.ts", false, true},
    {"a.tsx", false, true},
    {"a.mjs", false, true},
    {"a.cjs", false, true},
    {"a.es6", false, true},
    {"a.es", false, true},
    {".js", false, true, "a name may be empty"},
    {".html", true, false},
    {"x/y.d/a.min.js", false, true},
    {"a.js.html", true, false, "the last extension decides"},
    {"a.html.js", false, true},
    {"a.JS", false, false, "letter case counts"},
    {"a.Js", false, false},
    {"a.MJS", false, false},
    {"page.HTM", false, false},
    {"INDEX.HTML", false, false},
    {"page.Php", false, false},
    {"page.htmlx", false, false, "a byte too many"},
    {"page.ht", false, false, "a byte too few"},
    {"page.html5", false, false},
    {"page.shtml", false, false},
    {"page.xhtm", false, false},
    {"page.php5", false, false},
    {"page.ph", false, false},
    {"a.j", false, false},
    {"a.jss", false, false},
    {"a.json", false, false},
    {"a.mts", false, false},
    {"a.cts", false, false},
    {"a.es5", false, false},
    {"a.e", false, false},
    {"a.vue", false, false},
    {"a.js ", false, false, "nothing is trimmed"},
    {"a. js", false, false},
    {"a.js\0"sv, false, false, "NUL is a byte like any other"},
    {"js", false, false, "a name without a dot has no extension"},
    {"html", false, false},
    {"a.js/file", false, false, "required: a dot in a directory name is found"},
    {"a.js/", false, false},
    {"a.", false, false},
    {"", false, false},
};

TEST(IsHTMLFile, Table) {
  for (const KindCase& row : kKindCases) {
    SCOPED_TRACE(testing::PrintToString(row.path) + " " + std::string(row.why));
    EXPECT_EQ(IsHTMLFile(std::string(row.path)), row.page);
  }
}

TEST(IsJavaScriptOnlyFile, Table) {
  for (const KindCase& row : kKindCases) {
    SCOPED_TRACE(testing::PrintToString(row.path) + " " + std::string(row.why));
    EXPECT_EQ(IsJavaScriptOnlyFile(std::string(row.path)), row.script);
  }
}

struct NameCase {
  std::string_view path;
  std::string_view whole;
  std::string_view base;
  std::string_view why = "";
};
constexpr NameCase kNameCases[] = {
    {"/x/y/app.min.js", "app.min.js", "app.min", "one extension goes"},
    {"C:\\x\\app.js", "app.js", "app", "a backslash separates too"},
    {"/x/y/Makefile", "Makefile", "Makefile"},
    {"/x.d/y", "y", "y", "a dot in a directory name does no harm"},
    {"\\x.d\\y", "y", "y"},
    {"/x/.hidden", ".hidden", "", "a name that starts with a dot becomes empty"},
    {"/x/.hidden.js", ".hidden.js", ".hidden"},
    {"/x/", "", ""},
    {"x\\", "", ""},
    {"app.js", "app.js", "app"},
    {"app", "app", "app"},
    {"", "", ""},
    {"/", "", ""},
    {"\\", "", ""},
    {".", ".", ""},
    {"..", "..", "."},
    {"/x/app.", "app.", "app"},
    {"/x/a..js", "a..js", "a."},
    {"a/b\\c.js", "c.js", "c", "the last of both separators decides"},
    {"a\\b/c.js", "c.js", "c"},
    {"C:app.js", "C:app.js", "C:app", "a colon separates nothing"},
    {"/x/a b.js", "a b.js", "a b"},
    {"/x/ .js ", " .js ", " ", "nothing is trimmed"},
    {"/x\0/a\0b.js"sv, "a\0b.js"sv, "a\0b"sv, "NUL is a byte like any other"},
    {"/\xC3\xA9/\xC3\xA8.js", "\xC3\xA8.js", "\xC3\xA8"},
};

TEST(FileNameWithExtension, Table) {
  for (const NameCase& row : kNameCases) {
    SCOPED_TRACE(testing::PrintToString(row.path) + " " + std::string(row.why));
    EXPECT_EQ(FileNameWithExtension(std::string(row.path)), row.whole);
  }
}

TEST(FileName, Table) {
  for (const NameCase& row : kNameCases) {
    SCOPED_TRACE(testing::PrintToString(row.path) + " " + std::string(row.why));
    EXPECT_EQ(FileName(std::string(row.path)), row.base);
  }
}

}  // namespace
