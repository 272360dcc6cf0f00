#include "lsp/folding.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "lsp/symbols.h"

namespace host::lsp {
namespace {

constexpr std::size_t kMaxSelections = 200;  // clients read JSON recursively

void addLines(std::vector<Fold>& folds, const std::vector<outline::CommentLines>& lines,
              std::string_view kind) {
  for (const outline::CommentLines& each : lines) {
    if (each.lastLine <= each.firstLine) continue;
    folds.push_back({static_cast<std::uint32_t>(each.firstLine - 1),
                     static_cast<std::uint32_t>(each.lastLine - 1), kind});
  }
}

std::vector<Fold> allFolds(const FileOutline& outline) {
  std::vector<Fold> folds;
  addLines(folds, outline.imports, "imports");
  addLines(folds, outline.comments, "comment");
  for (const OutlineEntry& entry : outline.entries) {
    const std::uint32_t start = entry.range.start.line;
    const std::uint32_t end = entry.range.end.line - (entry.endsInCloser ? 1 : 0);
    if (end > start) folds.push_back({start, end});
  }
  std::stable_sort(folds.begin(), folds.end(), [](const Fold& a, const Fold& b) {
    return a.startLine != b.startLine ? a.startLine < b.startLine : a.endLine > b.endLine;
  });
  const auto isSameStart = [](const Fold& a, const Fold& b) { return a.startLine == b.startLine; };
  folds.erase(std::unique(folds.begin(), folds.end(), isSameStart), folds.end());
  return folds;
}

// How many folds contain each.
std::vector<std::size_t> levelsOf(const std::vector<Fold>& folds) {
  std::vector<std::size_t> levels;
  std::vector<std::uint32_t> ends;  // of the folds that contain the one before
  for (const Fold& fold : folds) {
    while (!ends.empty() && ends.back() < fold.endLine) ends.pop_back();
    levels.push_back(ends.size());
    ends.push_back(fold.endLine);
  }
  return levels;
}

// Collects ranges, each of which contains the one before.
class Widening {
 public:
  explicit Widening(Position position) : position_(position) {}

  void add(const Range& range) {
    const Range inner = ranges_.empty() ? Range{position_, position_} : ranges_.back();
    const bool contains = range.start <= inner.start && inner.end <= range.end;
    if (contains && (ranges_.empty() || range != inner)) ranges_.push_back(range);
  }

  std::vector<Range> take() { return std::move(ranges_); }
  std::size_t size() const { return ranges_.size(); }

 private:
  Position position_;
  std::vector<Range> ranges_;
};

void addLineRanges(Widening& ranges, std::string_view line, Position position, Encoding encoding) {
  const std::size_t at = bytesOf(line, position.character, encoding);
  std::size_t begin = at;
  std::size_t end = at;
  while (begin > 0 && isWordByte(line[begin - 1])) --begin;
  while (end < line.size() && isWordByte(line[end])) ++end;
  const auto place = [&](std::size_t byte) {
    return Position{position.line, unitsOf(line.substr(0, byte), encoding)};
  };
  if (end > begin) ranges.add({place(begin), place(end)});
  const std::size_t first = line.find_first_not_of(" \t");
  if (first == std::string_view::npos) return;
  ranges.add({place(first), place(line.find_last_not_of(" \t") + 1)});
}

// The last line's number and end.
Position endOf(std::string_view text, Encoding encoding) {
  Position end;
  std::size_t start = 0;
  for (std::size_t next = nextLine(text, start); next != std::string_view::npos;
       next = nextLine(text, start)) {
    start = next;
    ++end.line;
  }
  end.character = unitsOf(text.substr(start), encoding);
  return end;
}

std::size_t lineStart(std::string_view text, std::uint32_t line) {
  std::size_t start = 0;
  for (std::uint32_t passed = 0; passed < line && start != std::string_view::npos; ++passed) {
    start = nextLine(text, start);
  }
  return std::min(start, text.size());
}

}  // namespace

std::vector<Fold> findFolds(const FileOutline& outline, std::size_t limit) {
  std::vector<Fold> folds = allFolds(outline);
  if (folds.size() <= limit) return folds;
  const std::vector<std::size_t> levels = levelsOf(folds);
  std::vector<std::size_t> order(folds.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&levels](std::size_t a, std::size_t b) { return levels[a] < levels[b]; });
  order.resize(limit);
  std::sort(order.begin(), order.end());
  std::vector<Fold> kept;
  kept.reserve(limit);
  for (const std::size_t index : order) kept.push_back(folds[index]);
  return kept;
}

void writeFolds(JsonWriter& out, const FileOutline& outline, std::string_view text,
                const ClientFeatures& features) {
  out.StartArray();
  std::size_t start = 0;
  std::uint32_t line = 0;
  for (const Fold& fold : findFolds(outline, features.maxFolds)) {
    out.StartObject();
    writeMember(out, "startLine", fold.startLine);
    if (!features.foldsLinesOnly) {
      start += lineStart(text.substr(start), fold.startLine - line);
      line = fold.startLine;
      writeMember(out, "startCharacter", unitsOf(lineAt(text, start), features.encoding));
    }
    writeMember(out, "endLine", fold.endLine);
    if (!fold.kind.empty()) writeMember(out, "kind", fold.kind);
    out.EndObject();
  }
  out.EndArray();
}

std::vector<Range> rangesAround(const FileOutline& outline, std::string_view text,
                                Position position, Encoding encoding) {
  const std::string_view line = lineAt(text, lineStart(text, position.line));
  const Position end = endOf(text, encoding);
  position = position.line > end.line
                 ? end
                 : Position{position.line,
                            unitsOf(line.substr(0, bytesOf(line, position.character, encoding)),
                                    encoding)};
  Widening ranges(position);
  addLineRanges(ranges, line, position, encoding);
  const auto behind = std::upper_bound(
      outline.entries.begin(), outline.entries.end(), position,
      [](Position place, const OutlineEntry& entry) { return place < entry.range.start; });
  std::int64_t next = behind - outline.entries.begin() - 1;
  while (next >= 0 && ranges.size() < kMaxSelections) {
    const OutlineEntry& entry = outline.entries[static_cast<std::size_t>(next)];
    ranges.add(entry.range);
    next = entry.parent;
  }
  ranges.add({{0, 0}, end});
  std::vector<Range> found = ranges.take();
  if (found.empty()) found.push_back({position, position});
  return found;
}

void writeSelections(JsonWriter& out, const FileOutline& outline, std::string_view text,
                     const std::vector<Position>& positions, Encoding encoding) {
  out.StartArray();
  for (const Position position : positions) {
    const std::vector<Range> ranges = rangesAround(outline, text, position, encoding);
    for (const Range& range : ranges) {
      if (&range != &ranges.front()) writeKey(out, "parent");
      out.StartObject();
      writeKey(out, "range");
      writeRange(out, range);
    }
    for (std::size_t depth = ranges.size(); depth > 0; --depth) out.EndObject();
  }
  out.EndArray();
}

}  // namespace host::lsp
