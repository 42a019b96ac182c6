// The named values of the enumerated settings: each enumeration, then its table.
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
static_assert(isVariantTable(LSP_SOURCE_VARIANTS));

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
static_assert(isVariantTable(LOG_LEVEL_VARIANTS));

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
static_assert(isVariantTable(PMP_AUTH_VARIANTS));

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
static_assert(isVariantTable(PMP_AUTH_MODE_VARIANTS));

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
static_assert(isVariantTable(PMP_ID_TYPE_VARIANTS));

/// Who decides about updates.
/// The values start at 13, and the scope is part of the names.
namespace UpSrv {
enum Setting : int32_t {
  DISABLED = 13,
  LSP      = 14,
  LOCAL    = 15,
};
}  // namespace UpSrv
inline constexpr Variant UPDATE_SETTING_VARIANTS[] = {
  {UpSrv::DISABLED, "UpSrv::DISABLED"},
  {UpSrv::LSP,      "UpSrv::LSP"},
  {UpSrv::LOCAL,    "UpSrv::LOCAL"},
  {0,               nullptr},
};
static_assert(isVariantTable(UPDATE_SETTING_VARIANTS));

/// What is done with an update.
namespace UpSrv {
enum Mode : int32_t {
  NO_MODE       = 0,
  IMMEDIATELY   = 1,
  ON_SCHEDULE   = 2,
  DOWNLOAD_ONLY = 3,
  NOTIFY_ONLY   = 4,
};
}  // namespace UpSrv
inline constexpr Variant UPDATE_MODE_VARIANTS[] = {
  {UpSrv::NO_MODE,       "UpSrv::NO_MODE"},
  {UpSrv::IMMEDIATELY,   "UpSrv::IMMEDIATELY"},
  {UpSrv::ON_SCHEDULE,   "UpSrv::ON_SCHEDULE"},
  {UpSrv::DOWNLOAD_ONLY, "UpSrv::DOWNLOAD_ONLY"},
  {UpSrv::NOTIFY_ONLY,   "UpSrv::NOTIFY_ONLY"},
  {0,                    nullptr},
};
static_assert(isVariantTable(UPDATE_MODE_VARIANTS));

/// Character sets of log text.
/// The values are fixed character-set codes; UTF-8 is last although its code is the smallest.
enum Encoding : int32_t {
  CONVI_KOI8R = 7,
  CONVI_DOS   = 8,
  CONVI_1251  = 1251,
  CONVI_UTF8  = 6,
};
inline constexpr Variant ENCODINGS_VARIANTS[] = {
  {CONVI_KOI8R, "CONVI_KOI8R"},
  {CONVI_DOS,   "CONVI_DOS"},
  {CONVI_1251,  "CONVI_1251"},
  {CONVI_UTF8,  "CONVI_UTF8"},
  {0,           nullptr},
};
static_assert(isVariantTable(ENCODINGS_VARIANTS));

/// The language of log messages.
enum LogLanguage : int32_t {
  LOG_LANG_ENG = 0,
  LOG_LANG_RUS = 1,
};
inline constexpr Variant LOG_LANGUAGE_VARIANTS[] = {
  {LOG_LANG_ENG, "LOG_LANG_ENG"},
  {LOG_LANG_RUS, "LOG_LANG_RUS"},
  {0,            nullptr},
};
static_assert(isVariantTable(LOG_LANGUAGE_VARIANTS));

/// Operation of an IKE version.
/// Enabled is 2 and stands before responder-only, which is 1.
enum IkeStatus : int32_t {
  IKE_STATUS_DISABLED  = 0,
  IKE_STATUS_ENABLED   = 2,
  IKE_STATUS_RESPONDER = 1,
};
inline constexpr Variant IKE_STATUS_VARIANTS[] = {
  {IKE_STATUS_DISABLED,  "IKE_STATUS_DISABLED"},
  {IKE_STATUS_ENABLED,   "IKE_STATUS_ENABLED"},
  {IKE_STATUS_RESPONDER, "IKE_STATUS_RESPONDER"},
  {0,                    nullptr},
};
static_assert(isVariantTable(IKE_STATUS_VARIANTS));

/// How the configured servers are used.
/// The value of a parallel variant is its degree of parallelism.
enum ServersPolicy : int32_t {
  SERVERS_POLICY_FIRST = 0,
  SERVERS_POLICY_SEQ   = 1,
  SERVERS_POLICY_PAR2  = 2,
  SERVERS_POLICY_PAR4  = 4,
  SERVERS_POLICY_PAR8  = 8,
};
inline constexpr Variant SERVERS_POLICY_VARIANTS[] = {
  {SERVERS_POLICY_FIRST, "SERVERS_POLICY_FIRST"},
  {SERVERS_POLICY_SEQ,   "SERVERS_POLICY_SEQ"},
  {SERVERS_POLICY_PAR2,  "SERVERS_POLICY_PAR2"},
  {SERVERS_POLICY_PAR4,  "SERVERS_POLICY_PAR4"},
  {SERVERS_POLICY_PAR8,  "SERVERS_POLICY_PAR8"},
  {0,                    nullptr},
};
static_assert(isVariantTable(SERVERS_POLICY_VARIANTS));

/// NAT traversal.
/// A forced variant is its plain variant plus 128; the disabled one has no forced form.
enum NattPolicy : int32_t {
  NATT_POLICY_DISABLED   = 0,
  NATT_POLICY_STD        = 1,
  NATT_POLICY_ALL        = 2,
  NATT_POLICY_OLD        = 3,
  NATT_POLICY_AUTO       = 4,
  NATT_POLICY_STD_FORCE  = 129,
  NATT_POLICY_ALL_FORCE  = 130,
  NATT_POLICY_OLD_FORCE  = 131,
  NATT_POLICY_AUTO_FORCE = 132,
};
inline constexpr Variant NATT_POLICY_VARIANTS[] = {
  {NATT_POLICY_DISABLED,   "NATT_POLICY_DISABLED"},
  {NATT_POLICY_STD,        "NATT_POLICY_STD"},
  {NATT_POLICY_ALL,        "NATT_POLICY_ALL"},
  {NATT_POLICY_OLD,        "NATT_POLICY_OLD"},
  {NATT_POLICY_AUTO,       "NATT_POLICY_AUTO"},
  {NATT_POLICY_STD_FORCE,  "NATT_POLICY_STD_FORCE"},
  {NATT_POLICY_ALL_FORCE,  "NATT_POLICY_ALL_FORCE"},
  {NATT_POLICY_OLD_FORCE,  "NATT_POLICY_OLD_FORCE"},
  {NATT_POLICY_AUTO_FORCE, "NATT_POLICY_AUTO_FORCE"},
  {0,                      nullptr},
};
static_assert(isVariantTable(NATT_POLICY_VARIANTS));

/// How often errors are notified.
/// Always is -1, all bits set, not a large count.
enum ErrntfPolicy : int32_t {
  ERRNTF_POLICY_NEVER  = 0,
  ERRNTF_POLICY_1      = 1,
  ERRNTF_POLICY_10     = 10,
  ERRNTF_POLICY_100    = 100,
  ERRNTF_POLICY_ALWAYS = -1,
};
inline constexpr Variant ERRNTF_POLICY_VARIANTS[] = {
  {ERRNTF_POLICY_NEVER,  "ERRNTF_POLICY_NEVER"},
  {ERRNTF_POLICY_1,      "ERRNTF_POLICY_1"},
  {ERRNTF_POLICY_10,     "ERRNTF_POLICY_10"},
  {ERRNTF_POLICY_100,    "ERRNTF_POLICY_100"},
  {ERRNTF_POLICY_ALWAYS, "ERRNTF_POLICY_ALWAYS"},
  {0,                    nullptr},
};
static_assert(isVariantTable(ERRNTF_POLICY_VARIANTS));

/// IKE version 2 fragmentation.
enum Ike2Fragm : int32_t {
  IKE2_FRAGM_DISABLED = 0,
  IKE2_FRAGM_AUTO     = 1,
  IKE2_FRAGM_ALWAYS   = 2,
};
inline constexpr Variant IKE2_FRAGM_VARIANTS[] = {
  {IKE2_FRAGM_DISABLED, "IKE2_FRAGM_DISABLED"},
  {IKE2_FRAGM_AUTO,     "IKE2_FRAGM_AUTO"},
  {IKE2_FRAGM_ALWAYS,   "IKE2_FRAGM_ALWAYS"},
  {0,                   nullptr},
};
static_assert(isVariantTable(IKE2_FRAGM_VARIANTS));

/// The anti-replay window, in packets.
/// The names, asterisk included, are what the file holds.
enum AntiReplayWindowSize : int32_t {
  ANTI_REPLAY_WINDOW_0   = 0,
  ANTI_REPLAY_WINDOW_32  = 32,
  ANTI_REPLAY_WINDOW_64  = 64,
  ANTI_REPLAY_WINDOW_128 = 128,
  ANTI_REPLAY_WINDOW_256 = 256,
  ANTI_REPLAY_WINDOW_512 = 512,
};
inline constexpr Variant ANTI_REPLAY_WINDOW_SIZE_VARIANTS[] = {
  {ANTI_REPLAY_WINDOW_0,   "0"},
  {ANTI_REPLAY_WINDOW_32,  "1*32"},
  {ANTI_REPLAY_WINDOW_64,  "2*32"},
  {ANTI_REPLAY_WINDOW_128, "4*32"},
  {ANTI_REPLAY_WINDOW_256, "8*32"},
  {ANTI_REPLAY_WINDOW_512, "16*32"},
  {0,                      nullptr},
};
static_assert(isVariantTable(ANTI_REPLAY_WINDOW_SIZE_VARIANTS));

/// Traffic flow confidentiality padding.
enum TfcPadding : int32_t {
  TFC_PADDING_OFF = 0,
  TFC_PADDING_ON  = 1,
};
inline constexpr Variant TFC_PADDING_VARIANTS[] = {
  {TFC_PADDING_OFF, "TFC_PADDING_OFF"},
  {TFC_PADDING_ON,  "TFC_PADDING_ON"},
  {0,               nullptr},
};
static_assert(isVariantTable(TFC_PADDING_VARIANTS));

/// Use of DNS servers from the IKE configuration.
enum IkecfgDnsMode : int32_t {
  IKECFG_DNS_DISABLE       = 0,
  IKECFG_DNS_ENABLE        = 1,
  IKECFG_DNS_ENABLE_BEFORE = 2,
  IKECFG_DNS_ENABLE_AFTER  = 3,
};
inline constexpr Variant IKECFG_DNS_MODE_VARIANTS[] = {
  {IKECFG_DNS_DISABLE,       "IKECFG_DNS_DISABLE"},
  {IKECFG_DNS_ENABLE,        "IKECFG_DNS_ENABLE"},
  {IKECFG_DNS_ENABLE_BEFORE, "IKECFG_DNS_ENABLE_BEFORE"},
  {IKECFG_DNS_ENABLE_AFTER,  "IKECFG_DNS_ENABLE_AFTER"},
  {0,                        nullptr},
};
static_assert(isVariantTable(IKECFG_DNS_MODE_VARIANTS));

/// Certificate revocation list processing.
enum CrlProc : int32_t {
  CRL_DISABLE     = 0,
  CRL_ENABLE      = 1,
  CRL_ENABLE_SOFT = 2,
};
inline constexpr Variant CRL_PROC_VARIANTS[] = {
  {CRL_DISABLE,     "CRL_DISABLE"},
  {CRL_ENABLE,      "CRL_ENABLE"},
  {CRL_ENABLE_SOFT, "CRL_ENABLE_SOFT"},
  {0,               nullptr},
};
static_assert(isVariantTable(CRL_PROC_VARIANTS));

// clang-format on

}  // namespace LPARAMS::Server
