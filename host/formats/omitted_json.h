// What an answer leaves out, as JSON.
#pragma once

#include <string>
#include <vector>

#include "outline/omissions.h"

namespace host {

// A list with an object for each.
void appendOmitted(std::string& out, const std::vector<outline::Omission>& omitted);

}  // namespace host
