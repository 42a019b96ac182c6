// Documents of lines GROUP.NAME=VALUE.
#pragma once

#include "documents/document.h"

namespace documents {

Document readLines(std::string_view text, size_t keptMistakes);

}  // namespace documents
