// One input of a route's target: cleaned and built twice as a host's call does it, with everything
// that has to hold for any answer.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "harness.h"
#include "routes.h"

namespace fuzz {

struct RouteRun {
  std::string path;
  const Setting* setting = nullptr;
  std::string cleaned;  // the text that the tree was built of
  std::string answer;   // empty for an input without a file, which is not run
  Printed built;        // what was written while the tree was built
};

RouteRun runRoute(std::string_view input, std::span<const std::string_view> names);

}  // namespace fuzz
