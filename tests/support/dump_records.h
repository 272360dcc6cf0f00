// Prints the records of an answer as one short line, so that a test of a whole run fits on one
// line.
#pragma once

#include <string>
#include <string_view>

namespace support {

// Returns the trees that the records form through their parentID, in record order, separated by
// blanks. Each is LABEL"CONTENTS"@LINE followed by its children in parentheses, in the same form.
// Contents are as in the record, with escapes.
std::string dumpRecords(std::string_view answer);

// The same for the statements of a file of the scanner route: the children of record 1, which is
// the class wrapper, then, each after a bar, the trees of records that lost their parent. Trees
// below the file itself are omitted.
std::string dumpStatements(std::string_view answer);

}  // namespace support
