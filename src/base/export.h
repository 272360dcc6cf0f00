// The one export macro. Everything in the module is hidden unless its declaration carries it, and
// what carries it must also stand in the symbol lists under plugin/symbols.
#pragma once

#define QUORL_API __attribute__((visibility("default")))
