#include "lsp/uri.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace host::lsp;

TEST(Uri, LeadsToAPath) {
  EXPECT_EQ(pathOfUri("file:///a/b.js"), "/a/b.js");
  EXPECT_EQ(pathOfUri("file:///a%20b/%C3%A4%25.js"), "/a b/\xc3\xa4%.js");
  EXPECT_EQ(pathOfUri("file:///c%3A/x"), "/c:/x");
  EXPECT_EQ(pathOfUri("file://localhost/a"), "/a");
  EXPECT_EQ(pathOfUri("file:/a"), "/a");
  EXPECT_EQ(pathOfUri("file:///a?b#c"), "/a");
  for (const char* uri : {"", "/a", "untitled:Untitled-1", "http://a/b", "file://host/a", "file:a",
                          "file:///a%2", "file:///a%zz", "file:///a%00b"}) {
    EXPECT_EQ(pathOfUri(uri), std::nullopt) << uri;
  }
}

TEST(Uri, IsMadeOfAPath) {
  EXPECT_EQ(uriOfPath("/a/b-c_d.e~f"), "file:///a/b-c_d.e~f");
  EXPECT_EQ(uriOfPath("/a b/\xc3\xa4%?#:"), "file:///a%20b/%C3%A4%25%3F%23%3A");
}

TEST(Uri, HasAnExtension) {
  EXPECT_EQ(extensionOfUri("file:///a/b.test.js"), "js");
  EXPECT_EQ(extensionOfUri("file:///a.b/c"), "");
  EXPECT_EQ(extensionOfUri("untitled:a.ts"), "ts");
  EXPECT_EQ(extensionOfUri("git:/a.js?ref=HEAD"), "js");
  EXPECT_EQ(extensionOfUri("untitled:Untitled-1"), "");
  EXPECT_EQ(extensionOfUri("file:///a%2Ejs"), "js");
}

}  // namespace
