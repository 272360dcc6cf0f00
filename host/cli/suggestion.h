// What somebody who mistyped a word probably meant.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace host {

// The candidate nearest to the word, if it is near: at most one typing mistake for every three
// letters of the candidate. A mistake is a letter too many, missing or wrong, or two letters
// swapped; case does not count. Empty if none is near.
std::string_view nearest(std::string_view word, std::span<const std::string_view> candidates);

// "; did you mean CANDIDATE?", or an empty text.
std::string suggestion(std::string_view word, std::span<const std::string_view> candidates);

}  // namespace host
