#include "system/failure.h"

#include <system_error>

namespace host {

Failure systemFailure(const std::string& subject, int errorNumber) {
  return Failure((subject.empty() ? "''" : subject) + ": " +
                 std::generic_category().message(errorNumber));
}

}  // namespace host
