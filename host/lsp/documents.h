// The texts that the client has open, and their outlines.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "lsp/file_outline.h"
#include "lsp/json.h"

namespace host::lsp {

struct Document {
  std::string uri;
  std::string extension;  // by which the module picks the way to read it
  std::string text;
  std::uint64_t revision = 0;        // of the text
  std::uint64_t parsedRevision = 0;  // that the outline is of, 0 if none
  FileOutline outline;
  bool isOpen = true;  // else it was read from its file, for a request

  bool isParsed() const { return parsedRevision == revision; }
};

class Documents {
 public:
  Document& open(std::string_view uri, std::string_view language, std::string text);

  // Opens the file of a URI for a request; nothing if there is none to read. A limit other than 0
  // is the largest size that is read.
  Document* read(const std::string& uri, std::uint64_t limit);

  // Null for one that is not open.
  Document* find(std::string_view uri);

  void close(std::string_view uri);

  // Makes the changes of textDocument/didChange, in their order.
  void change(Document& document, const Json& changes, Encoding encoding);

  // Counts all texts that there have been, so that a later one has a higher number.
  std::uint64_t lastRevision() const { return lastRevision_; }

  std::map<std::string, Document, std::less<>>& all() { return all_; }

 private:
  std::map<std::string, Document, std::less<>> all_;
  std::uint64_t lastRevision_ = 0;
};

// The extension for a text: the URI's, unless the language is one that the module knows and the
// URI's extension is not.
std::string extensionFor(std::string_view uri, std::string_view language);

// The position or range of a message; nothing if it is none.
std::optional<Position> readPosition(const Json& value);
std::optional<Range> readRange(const Json& value);

}  // namespace host::lsp
