// The installed header and the documentation agree: a function or variable declared with different
// types does not compile, and the record's fields have the documented offsets.
#include <quorl_js.h>

#define PROMISED_WITHOUT_TYPES
#include "promised.h"

#include <cstddef>
#include <type_traits>

static_assert(std::is_standard_layout<ObjectBranch>::value, "a plain record");
static_assert(offsetof(ObjectBranch, parent) == 0, "");
static_assert(std::is_same<decltype(ObjectBranch::branchType), std::uint32_t>::value, "");
static_assert(std::is_same<decltype(ObjectBranch::nodeID), std::int32_t>::value, "");
static_assert(sizeof(Cleaner) == 1, "a holder of functions");
static_assert(std::is_same<decltype(&Cleaner::RemoveHTMLComments),
                           std::string (Cleaner::*)(std::string)>::value,
              "");
