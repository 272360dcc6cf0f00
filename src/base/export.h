// Marks a declaration as exported. Everything else in the module is hidden. An exported name must
// also be listed in the symbol lists under plugin/symbols.
#pragma once

#define QUORL_API __attribute__((visibility("default")))
