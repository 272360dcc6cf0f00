#include "outline/record_tags.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace host::outline {
namespace {

constexpr std::array<std::string_view, 5> kWrapperTags = {
    "html-document", "html-structure", "javascript-file", "main-script", "auto-generated"};

constexpr std::array<std::string_view, 8> kScriptExtensions = {"js",  "jsx", "ts",  "tsx",
                                                               "mjs", "cjs", "es6", "es"};
constexpr std::array<std::string_view, 4> kPageExtensions = {"html", "htm", "xhtml", "php"};

}  // namespace

bool hasTag(const Record& record, std::string_view tag) {
  return std::find(record.tags.begin(), record.tags.end(), tag) != record.tags.end();
}

// Most records have no tag.
bool wrapsFile(const Record& record) {
  const auto isWrapper = [](std::string_view tag) {
    return std::find(kWrapperTags.begin(), kWrapperTags.end(), tag) != kWrapperTags.end();
  };
  return record.label == "filepath" || record.label == "preprocessor" ||
         std::any_of(record.tags.begin(), record.tags.end(), isWrapper);
}

Route routeOfName(std::string_view path) {
  const std::size_t dot = path.rfind('.');
  if (dot == std::string_view::npos) return Route::kOther;
  const auto isOneOf = [extension = path.substr(dot + 1)](const auto& extensions) {
    return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
  };
  if (isOneOf(kScriptExtensions)) return Route::kScript;
  return isOneOf(kPageExtensions) ? Route::kPage : Route::kOther;
}

Route routeOf(std::string_view answer, std::string& path) {
  RecordReader records(answer);
  Route route = Route::kOther;
  for (const Record* record = records.next(); record != nullptr && records.recordCount() <= 3;
       record = records.next()) {
    path = record->filePath;
    if (hasTag(*record, "javascript-file")) route = Route::kScript;
    if (hasTag(*record, "html-document")) route = Route::kPage;
    if (!wrapsFile(*record)) break;
  }
  return route;
}

}  // namespace host::outline
