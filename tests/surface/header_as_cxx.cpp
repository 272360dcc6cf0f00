#include "plugin/plugin_api.h"

#include <type_traits>

static_assert(std::is_same_v<decltype(ParseJS), const char*(const char*, const char*)>);
static_assert(std::is_same_v<decltype(CleanupJS), void()>);
static_assert(std::is_same_v<decltype(Info), const char*()>);
