// Records and source text become an outline.
//
// The records say which lines are statements, elements and blocks, but not where a thing ends, and
// their nesting drifts. The outline takes lines, ends and nesting from the source:
//
// - Scripts: an item for each record that stands for a line. What the line defines comes from the
//   source's own syntax, whatever the record's label is; of several definitions on a line the item
//   is of the first. A definition on a line without a record (a private method) is an item too,
//   unless the line is too long or too far down for the module.
// - Pages: an item for each element, link and inline script, and for the lines of inline scripts.
// - Other text: an item for each record with a line; a block without one takes its first child's,
//   and one without children is left out. It ends where its last child does.
//
// The records that only wrap a file have no item.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "outline/comment_lines.h"
#include "outline/item.h"
#include "outline/script_source.h"
#include "records/record_reader.h"

namespace host::outline {

// What else a caller of makeOutline may want. Null stands for nothing.
struct OutlineExtras {
  // Gets one line on a fault in the answer.
  std::string* fault = nullptr;
  // Gets the comments of several lines that begin their lines.
  std::vector<CommentLines>* comments = nullptr;
  // Called with each record in turn, so that nobody has to read the answer once more.
  RecordAction onRecord = nullptr;
  // A script's source, read before for the same path. It is used up.
  ScriptSource* script = nullptr;
  // Which items of a script's records may be left out. They have to be of one line, and stay if
  // other records of that line follow.
  bool (*isUnwanted)(const Item&) = nullptr;
};

// Items in the order of their first lines, each behind the item that contains it. The answer is the
// module's for these bytes; records behind a fault in it are left out. The work grows linearly with
// the two texts.
std::vector<Item> makeOutline(std::string_view source, std::string_view answer,
                              const OutlineExtras& extras = {});

}  // namespace host::outline
