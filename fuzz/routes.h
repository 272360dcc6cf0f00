// The three routes as fuzz targets: the first byte of the input picks the file's name and the run's
// settings, the rest is the file.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace fuzz {

// Names that select a route. Some also affect a later stage, by the whole path or by a folder in
// it.
inline constexpr std::array<std::string_view, 9> kScriptNames{
    "a.js",   "greet.jsx",     "a.ts",       "my-app.tsx", "script/1.mjs",
    "_x.cjs", "dir.html/.es6", "class X.es", "it's.js"};
inline constexpr std::array<std::string_view, 5> kPageNames{"a.html", "a.htm", "script/a.xhtml",
                                                            "a.php", "b\\\"c.html"};
inline constexpr std::array<std::string_view, 7> kScannerNames{
    "a.css", "script/a.c", "a.html.bak", "README", "dir.js/a", "A.JS", "class.py"};

// Settings of a run. A host passes defines separated by line feeds; here they are lists.
struct Setting {
  std::array<std::string_view, 3> defines{};  // an empty one ends the list
  bool isJavaScript = true;
  std::string_view namespaceName{};
  std::string_view className{};
  std::string_view chunk{};  // its content before the run
  bool isCleaned = true;     // clean the text first, as ParseJS does
};
inline constexpr std::array<Setting, 9> kSettings{{{},
                                                   {{"DEBUG", "RELEASE"}},
                                                   {{"DEBUG", "DEBUG", "while (class x) {"}},
                                                   {{"}"}, false},
                                                   {{}, true, "outer"},
                                                   {{}, false, "", "Outer"},
                                                   {{}, true, "", "", "class "},
                                                   {{"A B"}, false, "N", "", "a\\"},
                                                   {{}, true, "", "", "", false}}};

struct Pick {
  std::string_view name;
  const Setting& setting;
};

// The first byte cycles through the names, and moves to the next setting after each full cycle.
inline Pick pickBy(unsigned char byte, std::span<const std::string_view> names) {
  return {names[byte % names.size()], kSettings[byte / names.size() % kSettings.size()]};
}
inline unsigned char byteFor(std::size_t name, std::size_t setting,
                             std::span<const std::string_view> names) {
  return static_cast<unsigned char>(setting * names.size() + name);
}
static_assert(kScriptNames.size() * kSettings.size() <= 256, "one byte picks");

}  // namespace fuzz
