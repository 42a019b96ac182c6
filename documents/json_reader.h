// Documents in JSON.
#pragma once

#include "documents/document.h"

namespace documents {

Document readJson(std::string_view text, size_t keptMistakes);

}  // namespace documents
