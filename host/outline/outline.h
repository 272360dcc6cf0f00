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

// Items in the order of their first lines, each behind the item that contains it. The answer is the
// module's for these bytes; records behind a fault in it are left out. Unless they are null, fault
// gets one line on that fault, comments the comments of several lines that begin their lines, and
// onRecord is called with each record in turn, so that nobody has to read the answer once more. A
// script's source may have been read before, for the same path; makeOutline uses script up. The
// work grows linearly with the two texts.
std::vector<Item> makeOutline(std::string_view source, std::string_view answer,
                              std::string* fault = nullptr,
                              std::vector<CommentLines>* comments = nullptr,
                              const RecordAction& onRecord = nullptr,
                              ScriptSource* script = nullptr);

}  // namespace host::outline
