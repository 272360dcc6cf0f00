// The three routes as fuzz targets: the first byte of the input picks the name of the file and how
// the run is asked for, all behind it is the file.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace fuzz {

// Names that lead to a route. Besides the extension some say something to a later stage, as a
// whole or by a folder in them.
inline constexpr std::array<std::string_view, 9> kScriptNames{
    "a.js",   "greet.jsx",     "a.ts",       "my-app.tsx", "script/1.mjs",
    "_x.cjs", "dir.html/.es6", "class X.es", "it's.js"};
inline constexpr std::array<std::string_view, 5> kPageNames{"a.html", "a.htm", "script/a.xhtml",
                                                            "a.php", "b\\\"c.html"};
inline constexpr std::array<std::string_view, 7> kScannerNames{
    "a.css", "script/a.c", "a.html.bak", "README", "dir.js/a", "A.JS", "class.py"};

// The ways to ask for a run. What a host gives are line feeds between names; here they are lists.
struct Setting {
  std::array<std::string_view, 3> defines{};  // an empty one ends the list
  bool isJavaScript = true;
  std::string_view namespaceName{};
  std::string_view className{};
  std::string_view chunk{};  // what it holds before the run
  bool isCleaned = true;     // the text is cleaned first, as a host's call does it
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

// The first byte counts through the names, and through the settings each time it is through these.
inline Pick pickBy(unsigned char byte, std::span<const std::string_view> names) {
  return {names[byte % names.size()], kSettings[byte / names.size() % kSettings.size()]};
}
inline unsigned char byteFor(std::size_t name, std::size_t setting,
                             std::span<const std::string_view> names) {
  return static_cast<unsigned char>(setting * names.size() + name);
}
static_assert(kScriptNames.size() * kSettings.size() <= 256, "one byte picks");

}  // namespace fuzz
