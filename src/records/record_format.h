// The text of one record and of its strings.
#pragma once

#include <cstddef>
#include <cstdint>
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

// Appends the node's record. hiddenChildId is the one nodeID that no child list names; isLast
// leaves out the comma behind the record.
void appendRecord(RecordText& out, const ObjectBranch& node, std::int32_t hiddenChildId,
                  bool isLast);

}  // namespace records
