#include "outline/page_items.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "outline/cleaned_text.h"
#include "outline/limits.h"
#include "outline/page_elements.h"
#include "outline/page_tags.h"
#include "outline/record_tags.h"
#include "outline/script_items.h"
#include "outline/source_lines.h"
#include "records/record_reader.h"

namespace host::outline {
namespace {

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

// The contents of an element are its name, with the line breaks of its tag, and a piece of its
// text.
std::size_t nameEnd(std::string_view contents) {
  return std::min(contents.find(": \""), contents.find_first_of(" \n"));
}

class PageItems {
 public:
  explicit PageItems(std::string_view source)
      : source_(source),
        lines_(source),
        page_(cleanText(source)),
        tags_(page_),
        elements_(findElements(source)),
        search_(elements_) {}

  std::vector<PlacedItem> run(RecordReader& records, const RecordAction& onRecord) {
    hasTag_ = tags_.next(tag_);
    while (const Record* const record = records.next()) {
      if (onRecord) onRecord(*record);
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
    for (const ScriptItems& script : scripts_) script.addOthers(lines_, items_);
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
    placed.item.name = record.contents.substr(0, nameEnd(record.contents));
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
                          kMaxScriptLines, ScriptDialect{});
  }

  void addScriptLine(const Record& record) {
    const std::int32_t behind = record.lineNumber - elementTag_.scriptRecordLine;
    const std::int32_t line = page_.lines.sourceLine(elementTag_.scriptLine +
                                                     static_cast<std::size_t>(std::max(behind, 0)));
    items_.push_back(scripts_.back().itemOf(record, std::min(line, lines_.count()), lines_));
  }

  void endScript() { scriptRecord_ = std::numeric_limits<std::int32_t>::max(); }

  std::string_view source_;
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

}  // namespace

std::vector<PlacedItem> outlinePage(std::string_view source, RecordReader& records,
                                    const RecordAction& onRecord) {
  return PageItems(source).run(records, onRecord);
}

}  // namespace host::outline
