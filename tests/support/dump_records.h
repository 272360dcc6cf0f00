// A short text for the records of an answer, so that a test of a whole run is one line.
#pragma once

#include <string>
#include <string_view>

namespace support {

// The trees that the records form by their parentID, in record order with blanks between them.
// Each is LABEL"CONTENTS"@LINE and, in parentheses, its children the same way. Contents read as in
// the record, escapes and all.
std::string dumpRecords(std::string_view answer);

// The same for what the statements of a file of the scanner route left: the children of record 1,
// which is the class wrapper, and then, each behind a bar, the trees of records that lost their
// parent. Trees below the file itself are not shown.
std::string dumpStatements(std::string_view answer);

}  // namespace support
