// The items of one script: what each of its lines defines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "outline/placed_items.h"
#include "outline/script_scanner.h"
#include "outline/source_lines.h"
#include "records/record_reader.h"

namespace host::outline {

class ScriptItems {
 public:
  // The text's first line has the given number in the source.
  ScriptItems(std::string_view text, std::int32_t firstLine, std::int32_t maxLines,
              ScriptDialect dialect);

  // The item of the record of a line. lines are those of the whole source.
  PlacedItem itemOf(const Record& record, std::int32_t line, SourceLines& lines);

  const std::vector<CommentLines>& comments() const { return structure_.comments; }

  // Adds the named definitions on lines that no record has asked for, but for lines that the module
  // leaves out.
  void addOthers(SourceLines& lines, std::vector<PlacedItem>& items) const;

 private:
  struct Choice {
    std::int32_t definition = -1;
    bool isTaken = false;
  };

  void prefer(std::size_t number);
  void describe(const Definition& definition, Item& item, SourceLines& lines) const;

  std::string_view text_;
  std::int32_t firstLine_;
  ScriptStructure structure_;
  std::vector<Choice> choices_;  // by line
};

}  // namespace host::outline
