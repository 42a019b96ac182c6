// Values as the client's commands print them.
#pragma once

#include <optional>
#include <string>

#include "bridge/named_values.h"
#include "client/catalogue_view.h"

namespace client {

/// One word that is fit for a line: in quotes if it would not be seen as one otherwise, a secret as
/// "(hidden)", what is missing as "-".
std::string shownValue(const bridge::NamedValue& of, const std::optional<std::string>& value);

/// "IKE.EXCHANGE_TIMEOUT: 90 -> 120   (not saved)".
std::string changeLine(const bridge::NamedValue& value, bool saved);

/// The running values as one JSON document: {"IKE": {"IKE_PORT": 500, ...}, "USERS": {"bob": ...}}.
CatalogueView::Json documentOf(const bridge::NamedValues& values, const CatalogueView& catalogue);

/// JSON as the commands print it: indented by two, a newline at the end. What is no UTF-8 becomes
/// U+FFFD.
std::string printedJson(const CatalogueView::Json& json);

}  // namespace client
