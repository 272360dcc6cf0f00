// What holds for the outline of any file, whatever its bytes are.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "outline/item.h"

// The first rule that the outline breaks; empty if it breaks none. The rules: lines lie in the
// source and do not run backwards, items are in the order of their first lines, each lies in its
// parent and is a level below it, each record that stands for a line has exactly one item, and an
// item without a record is the only definition of its line and has a name.
std::string brokenRule(const std::vector<host::outline::Item>& items, std::string_view source,
                       std::string_view answer);
