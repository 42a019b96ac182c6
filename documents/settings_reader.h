// Documents in the settings file's own format.
#pragma once

#include "documents/document.h"

namespace documents {

/// Has the module's own classes load the text. What they take otherwise than it stands there is a
/// mistake, but for what the text leaves out.
Document readSettingsFile(std::string_view text, size_t keptMistakes);

}  // namespace documents
