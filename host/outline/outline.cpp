#include "outline/outline.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "outline/cleaned_text.h"
#include "outline/page_elements.h"
#include "outline/page_tags.h"
#include "outline/placed_items.h"
#include "outline/script_scanner.h"
#include "outline/source_lines.h"
#include "records/record_reader.h"

namespace host::outline {
namespace {

// What the module reads of a script: that many lines of its cleaned text, and none that is longer.
constexpr std::size_t kMaxScriptLines = 100'000;
constexpr std::size_t kMaxLineBytes = 10'000;

constexpr std::array<std::string_view, 5> kWrapperTags = {
    "html-document", "html-structure", "javascript-file", "main-script", "auto-generated"};

bool hasTag(const Record& record, std::string_view tag) {
  return std::find(record.tags.begin(), record.tags.end(), tag) != record.tags.end();
}

bool wrapsFile(const Record& record) {
  return record.label == "filepath" || record.label == "preprocessor" ||
         std::any_of(kWrapperTags.begin(), kWrapperTags.end(),
                     [&record](std::string_view tag) { return hasTag(record, tag); });
}

enum class Route { kScript, kPage, kOther };

// Only the records know how the module read the file.
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

ScriptDialect dialectOf(std::string_view path) {
  const bool isPlainTypes =
      path.ends_with(".ts") || path.ends_with(".mts") || path.ends_with(".cts");
  return {.mayHoldJsx = !isPlainTypes};
}

// The items of one script, whose first line has the given number in the source.
class ScriptItems {
 public:
  ScriptItems(std::string_view text, std::int32_t firstLine, std::int32_t maxLines,
              ScriptDialect dialect)
      : text_(text),
        firstLine_(firstLine),
        structure_(scanScript(text, firstLine, maxLines, dialect)) {
    for (std::size_t i = 0; i < structure_.definitions.size(); ++i) prefer(i);
  }

  // The item of a record's line.
  PlacedItem itemOf(const Record& record, std::int32_t line, SourceLines& lines) {
    PlacedItem placed;
    placed.item.record = record.nodeId;
    placed.item.firstLine = placed.item.lastLine = line;
    const Choice* const choice = choiceAt(line);
    if (choice != nullptr && choice->definition >= 0) {
      const auto index = static_cast<std::size_t>(line - firstLine_);
      choices_[index].isTaken = true;
      describe(structure_.definitions[static_cast<std::size_t>(choice->definition)], placed.item,
               lines);
      return placed;
    }
    const auto index = static_cast<std::size_t>(line - firstLine_);
    if (line >= firstLine_ && index < structure_.lines.size()) {
      const LineFacts& facts = structure_.lines[index];
      placed.item.kind = facts.kind;
      placed.item.lastLine = std::max(line, facts.lastLine);
    }
    if (record.label == "define" && placed.item.kind == Kind::kStatement) {
      placed.item.kind = Kind::kModule;
    }
    return placed;
  }

  // The definitions on lines that no record has asked for, but for lines that the module leaves
  // out.
  void addOthers(SourceLines& lines, std::vector<PlacedItem>& items) {
    for (std::size_t i = 0; i < choices_.size(); ++i) {
      const Choice& choice = choices_[i];
      if (choice.definition < 0 || choice.isTaken) continue;
      const Definition& definition =
          structure_.definitions[static_cast<std::size_t>(choice.definition)];
      if (lines.text(definition.firstLine).size() > kMaxLineBytes) continue;
      PlacedItem placed;
      describe(definition, placed.item, lines);
      items.push_back(std::move(placed));
    }
  }

 private:
  struct Choice {
    std::int32_t definition = -1;
    bool isTaken = false;
  };

  const Choice* choiceAt(std::int32_t line) const {
    const auto index = static_cast<std::size_t>(line - firstLine_);
    return line >= firstLine_ && index < choices_.size() ? &choices_[index] : nullptr;
  }

  // Of the definitions of a line the first, but one that is main before one that is not.
  void prefer(std::size_t number) {
    const Definition& offered = structure_.definitions[number];
    const auto index = static_cast<std::size_t>(offered.firstLine - firstLine_);
    if (choices_.size() <= index) choices_.resize(index + 1);
    std::int32_t& chosen = choices_[index].definition;
    if (chosen >= 0) {
      const Definition& known = structure_.definitions[static_cast<std::size_t>(chosen)];
      const bool isBetter =
          offered.isMain != known.isMain ? offered.isMain : offered.nameBegin < known.nameBegin;
      if (!isBetter) return;
    }
    chosen = static_cast<std::int32_t>(number);
  }

  void describe(const Definition& definition, Item& item, SourceLines& lines) const {
    item.kind = definition.kind;
    item.name = text_.substr(definition.nameBegin, definition.nameEnd - definition.nameBegin);
    item.firstLine = definition.firstLine;
    item.lastLine =
        definition.lastLine > 0 ? definition.lastLine : lines.blockEnd(definition.firstLine);
    item.lastLine = std::max(item.lastLine, item.firstLine);
  }

  std::string_view text_;
  std::int32_t firstLine_;
  ScriptStructure structure_;
  std::vector<Choice> choices_;  // by line
};

std::vector<PlacedItem> outlineScript(std::string_view source, std::string_view answer,
                                      std::string_view path) {
  const LineMap map = cleanedLines(source);
  SourceLines lines(source);
  const std::int32_t maxLines =
      std::min(map.sourceLine(kMaxScriptLines - 1), static_cast<std::int32_t>(kMaxScriptLines));
  ScriptItems script(source, 1, maxLines, dialectOf(path));
  std::vector<PlacedItem> items;
  RecordReader records(answer);
  while (const Record* const record = records.next()) {
    if (record->lineNumber <= 0 || wrapsFile(*record)) continue;
    const std::int32_t line = map.sourceLine(static_cast<std::size_t>(record->lineNumber) - 1);
    items.push_back(script.itemOf(*record, std::min(line, lines.count()), lines));
  }
  script.addOthers(lines, items);
  return items;
}

// Finds the element of a tag: on the tag's line, of its name, behind the one found before.
class ElementSearch {
 public:
  explicit ElementSearch(const std::vector<PageElement>& elements) : elements_(elements) {}

  const PageElement* find(std::int32_t line, std::string_view name) {
    constexpr std::size_t kMaxSteps = 64;  // elements of a line that the module makes no records of
    while (next_ < elements_.size() && elements_[next_].line < line) ++next_;
    const std::size_t limit = std::min(elements_.size(), next_ + kMaxSteps);
    for (std::size_t at = next_; at < limit && elements_[at].line == line; ++at) {
      if (elements_[at].name != name) continue;
      next_ = at + 1;
      return &elements_[at];
    }
    return nullptr;
  }

 private:
  const std::vector<PageElement>& elements_;
  std::size_t next_ = 0;
};

// The part of a tag's text that is surely in the name of its record too.
std::string_view tagName(std::string_view tag) {
  const auto* const end = std::find_if_not(tag.begin(), tag.end(), [](char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') || byte == '-' || byte == ':' || byte == '_' || byte == '.';
  });
  return tag.substr(0, static_cast<std::size_t>(end - tag.begin()));
}

bool mayBeOf(const PageTag& tag, std::string_view contents) {
  const std::string_view name = tagName(tag.text);
  if (!name.empty()) return contents.starts_with(name);
  return tag.text.empty() ? contents.starts_with(": \"") : contents.starts_with(tag.text[0]);
}

class PageItems {
 public:
  PageItems(std::string_view source, std::string_view answer)
      : source_(source),
        answer_(answer),
        lines_(source),
        page_(cleanText(source)),
        tags_(page_),
        elements_(findElements(source)),
        search_(elements_) {}

  std::vector<PlacedItem> run() {
    hasTag_ = tags_.next(tag_);
    RecordReader records(answer_);
    while (const Record* const record = records.next()) {
      if (wrapsFile(*record)) continue;
      if (!scripts_.empty() && record->parentId >= scriptRecord_) {
        addScriptLine(*record);
      } else if (hasTag(*record, "inline-script")) {
        addScript(*record);
      } else if (hasTag(*record, "href") || hasTag(*record, "src")) {
        addLink(*record);
      } else {
        addElement(*record);
      }
    }
    for (ScriptItems& script : scripts_) script.addOthers(lines_, items_);
    return std::move(items_);
  }

 private:
  // Moves to the tag that the record was made of; false if there is none.
  bool findTag(const Record& record) {
    while (hasTag_ && (tag_.recordLine < record.lineNumber ||
                       (tag_.recordLine == record.lineNumber && !mayBeOf(tag_, record.contents)))) {
      hasTag_ = tags_.next(tag_);
    }
    return hasTag_ && tag_.recordLine == record.lineNumber;
  }

  void addElement(const Record& record) {
    endScript();
    PlacedItem placed;
    placed.item.kind = Kind::kElement;
    placed.item.record = record.nodeId;
    placed.item.name = record.contents.substr(0, record.contents.find(": \""));
    placed.item.firstLine = placed.item.lastLine = elementLine_;
    elementTag_ = {};
    if (findTag(record)) {
      elementTag_ = tag_;
      hasTag_ = tags_.next(tag_);
      placed.item.firstLine = placed.item.lastLine = elementTag_.line;
      element_ = search_.find(elementTag_.line, tagName(elementTag_.text));
    } else {
      element_ = nullptr;
    }
    elementLine_ = placed.item.firstLine;
    if (element_ != nullptr) {
      placed.item.lastLine = element_->lastLine;
      placed.begin = element_->begin;
      placed.end = element_->end;
    }
    items_.push_back(std::move(placed));
  }

  // A link stands right behind the element whose attribute it is.
  void addLink(const Record& record) {
    PlacedItem placed;
    placed.item.kind = Kind::kLink;
    placed.item.record = record.nodeId;
    const std::size_t value = record.contents.find(' ');
    if (value != std::string_view::npos) placed.item.name = record.contents.substr(value + 1);
    placed.item.firstLine = placed.item.lastLine = elementLine_;
    if (element_ != nullptr) placed.begin = placed.end = element_->begin + 1;
    items_.push_back(std::move(placed));
  }

  void addScript(const Record& record) {
    PlacedItem placed;
    placed.item.kind = Kind::kScript;
    placed.item.record = record.nodeId;
    placed.item.firstLine = placed.item.lastLine = elementLine_;
    if (element_ != nullptr) {
      placed.item.lastLine = element_->lastLine;
      placed.begin = element_->begin;
      placed.end = element_->end;
    }
    items_.push_back(std::move(placed));
    scriptRecord_ = record.nodeId;
    const std::string_view text =
        element_ == nullptr
            ? std::string_view()
            : source_.substr(element_->textBegin, element_->textEnd - element_->textBegin);
    scripts_.emplace_back(text, element_ == nullptr ? elementLine_ : element_->textLine,
                          static_cast<std::int32_t>(kMaxScriptLines), ScriptDialect{});
  }

  void addScriptLine(const Record& record) {
    const std::int32_t behind = record.lineNumber - elementTag_.scriptRecordLine;
    const std::int32_t line = page_.lines.sourceLine(elementTag_.scriptLine +
                                                     static_cast<std::size_t>(std::max(behind, 0)));
    items_.push_back(scripts_.back().itemOf(record, std::min(line, lines_.count()), lines_));
  }

  void endScript() { scriptRecord_ = std::numeric_limits<std::int32_t>::max(); }

  std::string_view source_;
  std::string_view answer_;
  SourceLines lines_;
  CleanedText page_;
  PageTags tags_;
  PageTag tag_;  // the next one
  bool hasTag_ = false;
  std::vector<PageElement> elements_;
  ElementSearch search_;
  PageTag elementTag_;  // of the last element
  const PageElement* element_ = nullptr;
  std::int32_t elementLine_ = 1;
  std::int32_t scriptRecord_ = std::numeric_limits<std::int32_t>::max();
  std::vector<ScriptItems> scripts_;
  std::vector<PlacedItem> items_;
};

struct LabelKind {
  std::string_view label;
  Kind kind;
};
constexpr std::array kLabelKinds = {
    LabelKind{"function", Kind::kFunction}, LabelKind{"class", Kind::kClass},
    LabelKind{"classvar", Kind::kVariable}, LabelKind{"container", Kind::kBlock},
    LabelKind{"define", Kind::kBlock},      LabelKind{"logic", Kind::kLogic},
    LabelKind{"loop", Kind::kLoop}};

Kind kindOf(std::string_view label) {
  const auto* const row =
      std::find_if(kLabelKinds.begin(), kLabelKinds.end(),
                   [label](const LabelKind& known) { return known.label == label; });
  return row == kLabelKinds.end() ? Kind::kStatement : row->kind;
}

std::vector<PlacedItem> outlineOther(std::string_view source, std::string_view answer) {
  const LineMap map = cleanedLines(source);
  const std::int32_t lineCount = SourceLines(source).count();
  struct Span {
    std::int32_t first;
    std::int32_t last;
    std::int32_t parent;
  };
  std::vector<Span> spans;  // by nodeID
  std::vector<PlacedItem> all;
  RecordReader records(answer);
  while (const Record* const record = records.next()) {
    const std::int32_t line =
        record->lineNumber <= 0
            ? 0
            : std::min(lineCount, map.sourceLine(static_cast<std::size_t>(record->lineNumber) - 1));
    spans.push_back({line, line, record->parentId});
    PlacedItem placed;
    placed.item.kind = kindOf(record->label);
    placed.item.record = wrapsFile(*record) ? -1 : record->nodeId;
    placed.item.name = record->simpleFunctionName;
    if (placed.item.name.empty() && placed.item.kind == Kind::kBlock) {
      placed.item.name = record->contents;
    }
    all.push_back(std::move(placed));
  }
  // Children stand behind their parents.
  for (std::size_t i = spans.size(); i-- > 0;) {
    const Span& child = spans[i];
    if (child.parent < 0 || child.first == 0 || static_cast<std::size_t>(child.parent) >= i)
      continue;
    Span& parent = spans[static_cast<std::size_t>(child.parent)];
    if (all[static_cast<std::size_t>(child.parent)].item.record < 0) continue;
    const bool hasLine = parent.first > 0 && parent.first <= child.first;
    parent.first = hasLine ? parent.first : child.first;
    parent.last = std::max(parent.last, child.last);
  }
  std::vector<PlacedItem> items;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (all[i].item.record < 0 || spans[i].first == 0) continue;
    all[i].item.firstLine = spans[i].first;
    all[i].item.lastLine = std::max(spans[i].first, spans[i].last);
    items.push_back(std::move(all[i]));
  }
  return items;
}

}  // namespace

std::vector<Item> makeOutline(std::string_view source, std::string_view answer) {
  // Positions in scripts are of 32 bits.
  source = source.substr(0, std::numeric_limits<std::uint32_t>::max());
  std::string path;
  switch (routeOf(answer, path)) {
    case Route::kScript:
      return nest(outlineScript(source, answer, path));
    case Route::kPage:
      return nest(PageItems(source, answer).run());
    case Route::kOther:
      break;
  }
  return nest(outlineOther(source, answer));
}

}  // namespace host::outline
