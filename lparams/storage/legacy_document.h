// The document that held the settings of earlier versions.
#pragma once

#include <string_view>

#include "lparams/catalogue/ike_group.h"
#include "lparams/catalogue/policy_group.h"
#include "platform/markup_document.h"

namespace LPARAMS::Server {

// Its elements, and the names that tell modules and parameters apart.
inline constexpr std::string_view LEGACY_SETTINGS = "LocalSettings";
inline constexpr std::string_view LEGACY_MODULE = "Module";
inline constexpr std::string_view LEGACY_PARAM = "Param";
inline constexpr std::string_view LEGACY_NAME = "Name";
inline constexpr std::string_view LEGACY_USER_MODULE = "USER_ACT_MODULE_ID";
inline constexpr std::string_view LEGACY_CERT_SUBJECT = "LOCAL_CERT_FOR_PM_SUBJECT";
inline constexpr std::string_view LEGACY_LOG_LEVEL = "PMS_LOG_LEVEL";
inline constexpr std::string_view LEGACY_SOURCE_TYPE = "POLICY_SOURCE_TYPE";
inline constexpr std::string_view LEGACY_SOURCE = "POLICY_SOURCE";
inline constexpr std::string_view LEGACY_IKE_MODULE = "ISAKMP_MODULE_ID";
inline constexpr std::string_view LEGACY_NATT_POLICY = "ike_nat_t_policy";

/// Assigns what it knows of the document to the two groups, under the parameters' own locks,
/// unchecked. What it does not know is passed over.
void importLegacyDocument(MLDoc& document, POLICY_t& policy, IKE_t& ike);

}  // namespace LPARAMS::Server
