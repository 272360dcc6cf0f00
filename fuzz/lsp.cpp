// The language server's framing and edits, with any bytes.
//
// Frames: what is read does not depend on the pieces that the bytes come in, and a message comes
// back from its frame. Edits: the bytes are a client that edits its text and reports it; the
// server's text stays equal to the client's.
#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "harness.h"
#include "lsp/documents.h"
#include "lsp/json.h"
#include "lsp/message_reader.h"
#include "lsp/plain_text.h"
#include "targets.h"

namespace fuzz {
namespace {

using host::lsp::Encoding;
using host::lsp::MessageReader;

std::vector<std::string> messagesIn(std::string_view bytes, std::size_t step) {
  MessageReader reader;
  std::vector<std::string> messages;
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    reader.append(bytes.substr(at, step));
    std::string_view body;
    for (auto result = reader.next(body); result != MessageReader::Result::kNone;
         result = reader.next(body)) {
      messages.emplace_back(result == MessageReader::Result::kMessage ? body : "broken");
    }
    reader.compact();
  }
  return messages;
}

void testFrames(std::string_view bytes) {
  // Each piece has the header that is not complete read again.
  constexpr std::size_t kBytesInPieces = 500;
  const std::string_view few = bytes.substr(0, kBytesInPieces);
  const std::vector<std::string> messages = messagesIn(few, few.size() + 1);
  require(messagesIn(few, 1) == messages, "pieces of a byte give other messages");
  require(messagesIn(few, 7) == messages, "pieces of seven bytes give other messages");
  const std::vector<std::string> back = messagesIn(host::lsp::framed(bytes), 4096);
  require(back.size() == 1 && back.front() == bytes, "a message differs from its frame");
  for (const std::string& message : messagesIn(bytes, bytes.size() + 1)) {
    rapidjson::Document document;
    if (host::lsp::parseJson(message, document)) host::lsp::jsonText(document);
  }
}

constexpr std::array<std::u16string_view, 12> kPieces = {
    u"",       u"a",  u"\n",           u"\r",      u"\r\n",    u"\x00e4",
    u"\x20ac", u"\"", u"\xd83d\xde00", u"\\u0041", u"x\ny\rz", std::u16string_view(u"\0", 1)};

// The bytes, one after the other; zeros behind the last.
class Bytes {
 public:
  explicit Bytes(std::string_view bytes) : rest_(bytes) {}

  bool areLeft() const { return !rest_.empty(); }

  std::size_t next() {
    if (rest_.empty()) return 0;
    const auto byte = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
  }

 private:
  std::string_view rest_;
};

void writePosition(host::lsp::JsonWriter& out, std::string_view key, host::lsp::Position position) {
  host::lsp::writeKey(out, key);
  out.StartObject();
  host::lsp::writeMember(out, "line", position.line);
  host::lsp::writeMember(out, "character", position.character);
  out.EndObject();
}

// Makes one edit on the client's side, and writes it as the protocol has it.
void edit(Bytes& bytes, lsp_test::PlainText& client, host::lsp::JsonWriter& out) {
  const std::size_t place = bytes.next() * 256 + bytes.next();
  const std::size_t begin = client.placeBefore(place % (client.size() + 1));
  const std::size_t length = bytes.next() % 8;
  const std::size_t behind = client.placeBefore(std::min(begin + length, client.size()));
  const std::size_t end = std::max(begin, behind);
  const std::size_t pick = bytes.next();
  const std::u16string piece(kPieces[pick % kPieces.size()]);
  out.StartObject();
  if (pick == 255) {  // the whole text
    client.replace(0, client.size(), piece);
  } else {
    host::lsp::writeKey(out, "range");
    out.StartObject();
    writePosition(out, "start", client.positionOf(begin));
    writePosition(out, "end", client.positionOf(end));
    out.EndObject();
    client.replace(begin, end, piece);
  }
  host::lsp::writeMember(out, "text", lsp_test::PlainText::utf8Of(piece));
  out.EndObject();
}

void testEdits(Encoding encoding, Bytes bytes) {
  lsp_test::PlainText client(encoding);
  host::lsp::Documents documents;
  host::lsp::Document& document = documents.open("untitled:a", "", "");
  while (bytes.areLeft()) {
    rapidjson::StringBuffer buffer;
    host::lsp::JsonWriter out(buffer);
    out.StartArray();
    for (std::size_t count = bytes.next() % 4 + 1; count > 0; --count) edit(bytes, client, out);
    out.EndArray();
    rapidjson::Document changes;
    require(host::lsp::parseJson(buffer.GetString(), changes), "changes that are no JSON");
    documents.change(document, changes, encoding);
    require(document.text == client.utf8(), "the server's text differs from the client's");
  }
}

}  // namespace

void testLsp(std::string_view input) {
  if (input.empty()) return;
  const bool isUtf8 = (static_cast<unsigned char>(input.front()) & 1U) != 0;
  input.remove_prefix(1);
  testFrames(input);
  testEdits(isUtf8 ? Encoding::kUtf8 : Encoding::kUtf16, Bytes(input));
}

}  // namespace fuzz
