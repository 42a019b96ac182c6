// The named values of the enumerated settings that several groups have: each enumeration, then its
// table. A table that serves one group alone stands beside that group.
//
// The values travel on the bridge and the names stand in settings files: do not change the value or
// the name of an existing row. The order of the rows decides nothing about matches and is kept as
// it is all the same.
#pragma once

#include "lparams/params/variant.h"

namespace LPARAMS::Server {

// clang-format off

/// Where an LSP comes from.
enum LspSource : int32_t {
  SOURCE_DDP  = 0,
  SOURCE_FILE = 1,
  SOURCE_PMP  = 2,
  SOURCE_TPN  = 3,
};
inline constexpr Variant LSP_SOURCE_VARIANTS[] = {
  {SOURCE_DDP,  "SOURCE_DDP"},
  {SOURCE_FILE, "SOURCE_FILE"},
  {SOURCE_PMP,  "SOURCE_PMP"},
  {SOURCE_TPN,  "SOURCE_TPN"},
  {0,           nullptr},
};

/// How much is logged.
/// The leading underscore is part of the names in the file; as an identifier it is reserved.
enum LogLevel : int32_t {
  LL_DISABLED = 0,
  LL_EVENTS   = 1,
  LL_DETAILS  = 2,
  LL_VERBOSE  = 3,
};
inline constexpr Variant LOG_LEVEL_VARIANTS[] = {
  {LL_DISABLED, "_LL_DISABLED"},
  {LL_EVENTS,   "_LL_EVENTS"},
  {LL_DETAILS,  "_LL_DETAILS"},
  {LL_VERBOSE,  "_LL_VERBOSE"},
  {0,           nullptr},
};

/// How the PMP component authenticates.
enum PmpAuth : int32_t {
  PMPAUTH_SIG = 0,
  PMPAUTH_PSK = 1,
};
inline constexpr Variant PMP_AUTH_VARIANTS[] = {
  {PMPAUTH_SIG, "PMPAUTH_SIG"},
  {PMPAUTH_PSK, "PMPAUTH_PSK"},
  {0,           nullptr},
};

/// Main or aggressive mode of that authentication.
enum PmpAuthMode : int32_t {
  PMPAUTH_MM = 0,
  PMPAUTH_AM = 1,
};
inline constexpr Variant PMP_AUTH_MODE_VARIANTS[] = {
  {PMPAUTH_MM, "PMPAUTH_MM"},
  {PMPAUTH_AM, "PMPAUTH_AM"},
  {0,          nullptr},
};

/// The kind of the PMP identity.
/// 5 stands second on purpose, next to its sibling form of the key identifier.
enum PmpIdType : int32_t {
  PMPID_KEY_ID     = 0,
  PMPID_KEY_ID_HEX = 5,
  PMPID_IP         = 1,
  PMPID_DNS        = 2,
  PMPID_EMAIL      = 3,
  PMPID_DN         = 4,
};
inline constexpr Variant PMP_ID_TYPE_VARIANTS[] = {
  {PMPID_KEY_ID,     "PMPID_KEY_ID"},
  {PMPID_KEY_ID_HEX, "PMPID_KEY_ID_HEX"},
  {PMPID_IP,         "PMPID_IP"},
  {PMPID_DNS,        "PMPID_DNS"},
  {PMPID_EMAIL,      "PMPID_EMAIL"},
  {PMPID_DN,         "PMPID_DN"},
  {0,                nullptr},
};

// clang-format on

}  // namespace LPARAMS::Server
