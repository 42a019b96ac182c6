// A text that shows by itself whether it is the one that was written.
#pragma once

#include <string>
#include <string_view>

namespace agent {

/// The text with its seal: one more line behind its end, with a checksum (XXH3, 128 bits) of it.
/// Against damage, not against somebody who wants to deceive.
std::string sealed(std::string_view text);

/// What a file holds that should be sealed.
struct SealedText {
  enum Seal {
    Intact,
    Broken,   ///< the text is not the one that was sealed
    Missing,  ///< never sealed, as in the files of earlier versions, or cut off
  };
  std::string text;  ///< without the seal
  Seal seal;
};

SealedText unsealed(std::string file);

}  // namespace agent
