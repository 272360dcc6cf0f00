#include "lsp/documents.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

#include "lsp/uri.h"
#include "system/failure.h"
#include "system/io.h"

namespace host::lsp {
namespace {

// Extensions of scripts and pages, as the module knows them.
constexpr std::array<std::string_view, 12> kKnownExtensions = {
    "js", "jsx", "ts", "tsx", "mjs", "cjs", "es6", "es", "html", "htm", "xhtml", "php"};

struct LanguageExtension {
  std::string_view language;  // as editors call it; some take the name of their mode
  std::string_view extension;
};
constexpr std::array kLanguages = {LanguageExtension{"javascript", "js"},
                                   LanguageExtension{"javascriptreact", "jsx"},
                                   LanguageExtension{"js", "js"},
                                   LanguageExtension{"js-jsx", "jsx"},
                                   LanguageExtension{"jsx", "jsx"},
                                   LanguageExtension{"typescript", "ts"},
                                   LanguageExtension{"typescriptreact", "tsx"},
                                   LanguageExtension{"tsx", "tsx"},
                                   LanguageExtension{"html", "html"},
                                   LanguageExtension{"mhtml", "html"},
                                   LanguageExtension{"php", "php"}};

}  // namespace

std::string extensionFor(std::string_view uri, std::string_view language) {
  std::string extension = extensionOfUri(uri);
  const bool isKnown = std::find(kKnownExtensions.begin(), kKnownExtensions.end(), extension) !=
                       kKnownExtensions.end();
  if (isKnown) return extension;
  const auto* const row = std::find_if(
      kLanguages.begin(), kLanguages.end(),
      [language](const LanguageExtension& known) { return known.language == language; });
  return row == kLanguages.end() ? extension : std::string(row->extension);
}

Document& Documents::open(std::string_view uri, std::string_view language, std::string text) {
  Document& document = all_[std::string(uri)];
  document = {};
  document.uri = uri;
  document.extension = extensionFor(uri, language);
  document.text = std::move(text);
  document.revision = ++lastRevision_;
  return document;
}

Document* Documents::read(const std::string& uri, std::uint64_t limit) {
  const std::optional<std::string> path = pathOfUri(uri);
  if (!path) return nullptr;
  const int file = ::open(path->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return nullptr;
  struct stat status {};
  const bool isRead = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode) &&
                      (limit == 0 || static_cast<std::uint64_t>(status.st_size) <= limit);
  Document* document = nullptr;
  try {
    if (isRead) document = &open(uri, "", readToEnd(file, *path));
  } catch (const Failure&) {
    // It cannot be read after all.
  }
  ::close(file);
  if (document != nullptr) document->isOpen = false;
  return document;
}

Document* Documents::find(std::string_view uri) {
  const auto found = all_.find(uri);
  return found == all_.end() ? nullptr : &found->second;
}

void Documents::close(std::string_view uri) {
  const auto found = all_.find(uri);
  if (found != all_.end()) all_.erase(found);
}

void Documents::change(Document& document, const Json& changes, Encoding encoding) {
  for (const Json& change : changes.GetArray()) {
    const std::optional<std::string_view> text = lsp::findText(change, {"text"});
    if (!text) continue;
    const Json* const range = lsp::find(change, {"range"});
    if (range == nullptr) {
      document.text = *text;
    } else if (const std::optional<Range> replaced = readRange(*range)) {
      replaceRange(document.text, *replaced, *text, encoding);
    }
  }
  document.revision = ++lastRevision_;
}

std::optional<Position> readPosition(const Json& value) {
  const std::optional<std::uint32_t> line = findNumber(value, {"line"});
  const std::optional<std::uint32_t> character = findNumber(value, {"character"});
  if (!line || !character) return std::nullopt;
  return Position{*line, *character};
}

std::optional<Range> readRange(const Json& value) {
  const Json* const start = lsp::find(value, {"start"});
  const Json* const end = lsp::find(value, {"end"});
  if (start == nullptr || end == nullptr) return std::nullopt;
  const std::optional<Position> first = readPosition(*start);
  const std::optional<Position> last = readPosition(*end);
  if (!first || !last) return std::nullopt;
  return Range{*first, *last};
}

}  // namespace host::lsp
