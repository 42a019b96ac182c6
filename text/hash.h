// A hash of bytes, to tell whether two texts are the same.
#pragma once

#include <string>
#include <string_view>

namespace text {

/// XXH3, 128 bits (the xxHash library), as 32 hexadecimal digits. Not fit against who wants two
/// texts to have the same.
std::string hashOf(std::string_view bytes);

}  // namespace text
