#include "outline/script_items.h"

#include <algorithm>
#include <utility>

#include "outline/limits.h"

namespace host::outline {

ScriptItems::ScriptItems(std::string_view text, std::int32_t firstLine, std::int32_t maxLines,
                         ScriptDialect dialect)
    : text_(text),
      firstLine_(firstLine),
      structure_(scanScript(text, firstLine, maxLines, dialect)) {
  for (std::size_t i = 0; i < structure_.definitions.size(); ++i) prefer(i);
}

PlacedItem ScriptItems::itemOf(const Record& record, std::int32_t line, SourceLines& lines) {
  PlacedItem placed;
  placed.item.record = record.nodeId;
  placed.item.firstLine = placed.item.lastLine = line;
  const auto index = static_cast<std::size_t>(std::max(line - firstLine_, 0));
  if (index < choices_.size() && choices_[index].definition >= 0) {
    choices_[index].isTaken = true;
    const auto number = static_cast<std::size_t>(choices_[index].definition);
    describe(structure_.definitions[number], placed.item, lines);
    return placed;
  }
  if (index < structure_.lines.size()) {
    const LineFacts& facts = structure_.lines[index];
    placed.item.kind = facts.kind;
    placed.item.lastLine = std::max(line, facts.lastLine);
  }
  if (record.label == "define" && placed.item.kind == Kind::kStatement) {
    placed.item.kind = Kind::kModule;
  }
  return placed;
}

void ScriptItems::addOthers(SourceLines& lines, std::vector<PlacedItem>& items) const {
  for (const Choice& choice : choices_) {
    if (choice.definition < 0 || choice.isTaken) continue;
    const auto number = static_cast<std::size_t>(choice.definition);
    const Definition& definition = structure_.definitions[number];
    if (definition.nameBegin == definition.nameEnd) continue;  // nothing to show or to find it by
    if (lines.text(definition.firstLine).size() > kMaxLineBytes) continue;
    PlacedItem placed;
    describe(definition, placed.item, lines);
    items.push_back(std::move(placed));
  }
}

// Of the definitions of a line the first, but one that is main before one that is not.
void ScriptItems::prefer(std::size_t number) {
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

void ScriptItems::describe(const Definition& definition, Item& item, SourceLines& lines) const {
  item.kind = definition.kind;
  item.name = text_.substr(definition.nameBegin, definition.nameEnd - definition.nameBegin);
  item.firstLine = definition.firstLine;
  const bool hasEnd = definition.lastLine > 0;
  item.lastLine = hasEnd ? definition.lastLine : lines.blockEnd(definition.firstLine);
  item.lastLine = std::max(item.lastLine, item.firstLine);
}

}  // namespace host::outline
