// The exit statuses of the program, as the documentation lists them.
#pragma once

namespace host {

inline constexpr int kSuccess = 0;
inline constexpr int kFileFailed = 1;
inline constexpr int kRunFailed = 2;

}  // namespace host
