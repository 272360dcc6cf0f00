// The text of one record and of its strings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "base/export.h"
#include "records/record_text.h"
#include "tree/object_branch.h"

// The text with a backslash before each double quote, single quote and backslash, and with line
// feed, carriage return and tab as \n, \r and \t. Every other byte stays as it is.
// required: a single quote is escaped too, which strict JSON refuses.
QUORL_API std::string EscapeString(const std::string& text);

namespace records {

void appendEscaped(RecordText& out, std::string_view text);

// The numbers of the nodes around one, as its record names them.
struct Relatives {
  std::int32_t parentId;                   // -1 for none
  std::span<const std::int32_t> childIds;  // in the order of the child list
  std::int32_t hiddenChildId;              // the one number that no child list names
};

// Appends the node's record. isLast leaves out the comma behind it.
void appendRecord(RecordText& out, const ObjectBranch& node, const Relatives& relatives,
                  bool isLast);

}  // namespace records
