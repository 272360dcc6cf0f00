// Formats one record and escapes its strings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "base/export.h"
#include "records/record_text.h"
#include "tree/object_branch.h"

// Returns the text with a backslash before each double quote, single quote and backslash, and with
// line feed, carriage return and tab as \n, \r and \t. Every other byte stays as it is.
// required: a single quote is escaped too, which strict JSON rejects.
QUORL_API std::string EscapeString(const std::string& text);

namespace records {

void appendEscaped(RecordText& out, std::string_view text);

// The numbers of a node's relatives, as its record lists them.
struct Relatives {
  std::int32_t parentId;                   // -1 for none
  std::span<const std::int32_t> childIds;  // in the order of the child list
  std::int32_t hiddenChildId;              // the one number that child lists leave out
};

// The bytes that the node's record takes at most.
std::size_t maxRecordBytes(const ObjectBranch& node, std::size_t escapedPathBytes,
                           std::size_t childCount);

// Appends the node's record, followed by a comma unless isLast. escapedPath is the node's filePath,
// escaped: it is the same for most nodes of a run.
void appendRecord(RecordText& out, const ObjectBranch& node, std::string_view escapedPath,
                  const Relatives& relatives, bool isLast);

}  // namespace records
