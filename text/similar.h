// What somebody may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace text {

/// How many letters have to be put in, left out, replaced or swapped with their neighbour to make
/// one text the other, without regard to ASCII case (the restricted Damerau-Levenshtein distance).
size_t distance(std::string_view a, std::string_view b);

/// The candidate that is nearest to the text, the first of several; empty if none is near enough to
/// be what was meant: with at most one mistake in four letters. Looks at short texts only.
std::string similar(std::string_view text, const std::vector<std::string>& candidates);

}  // namespace text
