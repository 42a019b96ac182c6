// The document that held the settings of earlier versions.
#pragma once

#include "lparams/catalogue/ike_group.h"
#include "lparams/catalogue/policy_group.h"
#include "platform/markup_document.h"

namespace LPARAMS::Server {

/// Assigns what it knows of the document to the two groups, under the parameters' own locks,
/// unchecked. What it does not know is passed over.
void importLegacyDocument(MLDoc& document, POLICY_t& policy, IKE_t& ike);

}  // namespace LPARAMS::Server
