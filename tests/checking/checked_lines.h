// What a check finds, as lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "checking/check.h"

namespace checking_testing {

/// The lines of a file that is called "f", without that name.
inline std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  for (const inspection::Remark& remark : checking::check(text).remarks) {
    lines.push_back(inspection::lineOf("f", remark).substr(2));
  }
  return lines;
}

}  // namespace checking_testing
