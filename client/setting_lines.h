// Settings as lines, or as a document.
#pragma once

#include <string>

#include "client/store.h"

namespace client {

/// The line of one value.
std::string settingLine(const bridge::NamedValue& of, bool secrets);

/// A group, a user, or everything if `name` is empty, as lines NAME=value that `set` takes back.
/// Secrets show only if `secrets`. What `set` would not take as it stands is a comment, a line that
/// begins with "#".
std::string settingLines(Store& store, const std::string& name, bool secrets);

/// The same as one JSON document; a secret that does not show is null.
std::string settingDocument(Store& store, const std::string& name, bool secrets);

}  // namespace client
