#include "lsp/file_outline.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

#include "lsp/symbols.h"
#include "system/utf8.h"

namespace host::lsp {
namespace {

using outline::Item;
using outline::Kind;

constexpr std::size_t kMaxNameBytes = 120;
constexpr std::size_t kSearchedBytes = 4096;  // of a line, for a name

// Blanks and line ends. As a loop: the library's searches for one of a set look each byte up with a
// call, which took half of the time that placing items takes.
constexpr bool isBlank(char byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

// The offset of the first byte that is no blank, the text's length if there is none.
std::size_t indentationOf(std::string_view text) {
  const auto* const end = std::find_if_not(text.begin(), text.end(), isBlank);
  return static_cast<std::size_t>(end - text.begin());
}

std::size_t findWord(std::string_view text, std::string_view word) {
  for (std::size_t at = text.find(word); at != std::string_view::npos;
       at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    const bool beginsInWord = isWordByte(word.front()) && at > 0 && isWordByte(text[at - 1]);
    const bool endsInWord = isWordByte(word.back()) && end < text.size() && isWordByte(text[end]);
    if (!beginsInWord && !endsInWord) return at;
  }
  return std::string_view::npos;
}

bool isAscii(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

// Adds the text on one line, with an ellipsis if it is cut.
void appendShortName(std::string& names, std::string_view text) {
  // Most names need no change.
  const auto isKept = [](char byte) { return isAscii(byte) && !isBlank(byte); };
  if (text.size() <= kMaxNameBytes && std::all_of(text.begin(), text.end(), isKept)) {
    names.append(text);
    return;
  }
  std::array<char, kMaxNameBytes + 1> name;  // and a blank before the last character
  std::size_t size = 0;
  bool isAfterBlank = false;
  bool isCut = false;
  for (std::size_t at = 0; at < text.size();) {
    if (isBlank(text[at])) {
      isAfterBlank = size > 0;
      ++at;
      continue;
    }
    const std::size_t bytes = isAscii(text[at]) ? 1 : codePointAt(text, at).bytes;
    isCut = size + bytes > kMaxNameBytes;
    if (isCut) break;
    if (std::exchange(isAfterBlank, false)) name[size++] = ' ';
    // The first byte by itself: most have no other, and a call for each took half of all the time.
    name[size++] = text[at];
    if (bytes > 1) size += text.copy(name.data() + size, bytes - 1, at + 1);
    at += bytes;
  }
  names.append(name.data(), size);
  if (isCut) names += "...";
}

// The part of an element's name that stands in its tag.
std::string_view searchedName(const Item& item) {
  const std::string_view name = item.name;
  if (item.kind != Kind::kElement) return name;
  return name.substr(0, name.find_first_of(".#[ "));
}

bool beginsWithCloser(std::string_view line) {
  line.remove_prefix(indentationOf(line));
  return line.starts_with('}') || line.starts_with(')') || line.starts_with(']') ||
         line.starts_with("</");
}

// Columns of places in lines. Many items may stand on one long line, so its length is counted once,
// and a place from the one before it.
class Columns {
 public:
  Columns(const outline::SourceLines& lines, Encoding encoding)
      : lines_(lines),
        encoding_(encoding),
        lengths_(static_cast<std::size_t>(lines_.count()), -1) {}

  std::int32_t clamped(std::int32_t line) const { return std::clamp(line, 1, lines_.count()); }
  std::string_view text(std::int32_t line) const { return lines_.text(line); }

  Position at(std::int32_t line, std::size_t byte) {
    if (line != line_ || byte < byte_) {
      line_ = line;
      byte_ = 0;
      units_ = 0;
    }
    units_ += unitsOf(text(line).substr(byte_, byte - byte_), encoding_);
    byte_ = byte;
    return {static_cast<std::uint32_t>(line - 1), units_};
  }

  Position end(std::int32_t line) {
    std::int64_t& length = lengths_[static_cast<std::size_t>(line) - 1];
    if (length < 0) length = unitsOf(text(line), encoding_);
    return {static_cast<std::uint32_t>(line - 1), static_cast<std::uint32_t>(length)};
  }

 private:
  const outline::SourceLines& lines_;
  Encoding encoding_;
  std::vector<std::int64_t> lengths_;  // -1 until asked for
  std::int32_t line_ = 0;              // of the last place
  std::size_t byte_ = 0;
  std::uint32_t units_ = 0;
};

class Placement {
 public:
  Placement(const outline::SourceLines& lines, Encoding encoding) : columns_(lines, encoding) {}

  void add(const Item& item, std::int32_t parent) {
    const std::int32_t first = columns_.clamped(item.firstLine);
    const std::int32_t last = std::max(first, columns_.clamped(item.lastLine));
    const std::string_view head = columns_.text(first);
    const std::size_t indentation = indentationOf(head);
    OutlineEntry entry;
    entry.kind = item.kind;
    entry.parent = parent;
    entry.range = {columns_.at(first, indentation), columns_.end(last)};
    entry.endsInCloser = last > first && beginsWithCloser(columns_.text(last));
    const std::size_t nameOffset = outline_.names.size();
    if (item.name.empty() && !mayBeSymbol(item.kind)) {
      entry.selection = entry.range;
    } else {
      entry.selection = findName(searchedName(item), first, indentation);
      appendShortName(outline_.names, item.name.empty() ? head.substr(0, kSearchedBytes)
                                                        : std::string_view(item.name));
    }
    entry.nameOffset = static_cast<std::uint32_t>(nameOffset);
    entry.nameBytes = static_cast<std::uint32_t>(outline_.names.size() - nameOffset);
    outline_.entries.push_back(entry);
  }

  void noteImport(const Item& item) {
    constexpr std::string_view kImport = "import";
    if (item.kind != Kind::kModule || item.parent >= 0) return;
    const std::int32_t first = columns_.clamped(item.firstLine);
    if (!columns_.text(first).starts_with(kImport)) return;
    std::vector<outline::CommentLines>& runs = outline_.imports;
    if (runs.empty() || !areBlank(runs.back().lastLine + 1, first)) runs.push_back({first, first});
    runs.back().lastLine = std::max(runs.back().lastLine, columns_.clamped(item.lastLine));
  }

  FileOutline take() { return std::move(outline_); }

 private:
  bool isBlankLine(std::int32_t line) const {
    const std::string_view text = columns_.text(line);
    return indentationOf(text) == text.size();
  }

  bool areBlank(std::int32_t line, std::int32_t end) const {
    while (line < end && isBlankLine(line)) {
      ++line;
    }
    return line >= end;
  }

  // Of several items on a line each has its name behind that of the one before.
  Range findName(std::string_view name, std::int32_t line, std::size_t indentation) {
    const std::string_view text = columns_.text(line);
    const std::size_t from = line == nameLine_ ? nameEnd_ : indentation;
    const std::size_t at =
        name.empty() ? std::string_view::npos : findWord(text.substr(from, kSearchedBytes), name);
    if (at == std::string_view::npos) return {columns_.at(line, indentation), columns_.end(line)};
    nameLine_ = line;
    nameEnd_ = from + at + name.size();
    const Position start = columns_.at(line, from + at);
    return {start, columns_.at(line, nameEnd_)};
  }

  Columns columns_;
  FileOutline outline_;
  std::int32_t nameLine_ = 0;  // where the last name was found
  std::size_t nameEnd_ = 0;
};

template <typename Value>
void appendVector(std::string& out, const std::vector<Value>& values) {
  static_assert(std::is_trivially_copyable_v<Value>);
  const std::uint64_t count = values.size();
  out.append(reinterpret_cast<const char*>(&count), sizeof count);
  out.append(reinterpret_cast<const char*>(values.data()), count * sizeof(Value));
}

template <typename Value>
bool takeBytes(std::string_view& bytes, Value* values, std::size_t count) {
  if (bytes.size() / sizeof(Value) < count) return false;
  if (count > 0) std::memcpy(values, bytes.data(), count * sizeof(Value));
  bytes.remove_prefix(count * sizeof(Value));
  return true;
}

template <typename Value>
bool takeVector(std::string_view& bytes, std::vector<Value>& values) {
  std::uint64_t count = 0;
  if (!takeBytes(bytes, &count, 1) || count > bytes.size() / sizeof(Value)) return false;
  values.resize(count);
  return takeBytes(bytes, values.data(), count);
}

// Finds the parents wrong that do not contain the entry before theirs.
bool areNested(const std::vector<OutlineEntry>& entries) {
  std::vector<std::int32_t> open;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    while (!open.empty() && open.back() != entries[i].parent) open.pop_back();
    if (open.empty() && entries[i].parent != -1) return false;
    open.push_back(static_cast<std::int32_t>(i));
  }
  return true;
}

bool isSound(const FileOutline& outline, std::size_t index) {
  const OutlineEntry& entry = outline.entries[index];
  std::uint8_t closer = 0;
  std::memcpy(&closer, &entry.endsInCloser, sizeof closer);
  return entry.kind <= Kind::kBlock && closer <= 1 && entry.nameOffset <= outline.names.size() &&
         entry.nameBytes <= outline.names.size() - entry.nameOffset;
}

}  // namespace

bool hasNoEntry(const Item& item) {
  const bool mayBeShown = item.kind != Kind::kLogic && item.kind != Kind::kLoop &&
                          item.kind != Kind::kStatement && item.kind != Kind::kCallback;
  return !mayBeShown && item.lastLine <= item.firstLine;
}

FileOutline placeItems(const outline::SourceLines& lines, const std::vector<Item>& items,
                       std::vector<outline::CommentLines> comments, Encoding encoding) {
  Placement placement(lines, encoding);
  std::vector<std::int32_t> kept(items.size());  // the entry that stands for the item
  std::int32_t count = 0;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const std::int32_t above =
        items[i].parent < 0 ? -1 : kept[static_cast<std::size_t>(items[i].parent)];
    kept[i] = above;
    placement.noteImport(items[i]);
    if (hasNoEntry(items[i])) continue;
    placement.add(items[i], above);
    kept[i] = count++;
  }
  FileOutline outline = placement.take();
  outline.comments = std::move(comments);
  return outline;
}

std::string outlineBytes(const FileOutline& outline) {
  std::string bytes;
  appendVector(bytes, outline.entries);
  appendVector(bytes, outline.comments);
  appendVector(bytes, outline.imports);
  return bytes.append(outline.names);
}

bool readOutline(std::string_view bytes, FileOutline& outline) {
  if (!takeVector(bytes, outline.entries) || !takeVector(bytes, outline.comments) ||
      !takeVector(bytes, outline.imports)) {
    return false;
  }
  outline.names = bytes;
  for (std::size_t i = 0; i < outline.entries.size(); ++i) {
    if (!isSound(outline, i)) return false;
  }
  return areNested(outline.entries);
}

}  // namespace host::lsp
