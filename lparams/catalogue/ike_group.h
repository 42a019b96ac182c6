// Key-exchange and IPsec settings.
#pragma once

#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

// The values travel on the bridge and the names stand in settings files: do not change the value or
// the name of an existing row.
// clang-format off

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

// clang-format on

/// The IKE versions 1 and 2, NAT traversal, IPsec and certificate checks.
struct IKE_t : ParamGroup {
  IKE_t() : ParamGroup("IKE") {}

  // Order of rows = order in the file and on the wire. Do not sort, do not insert in the middle.
  // clang-format off
  EnumParam IKE1_STATUS                       {*this, Label("IKE1_STATUS\0"                       "operation of IKE version 1"),                              {IKE_STATUS_ENABLED,       IKE_STATUS_VARIANTS}};
  EnumParam IKE2_STATUS                       {*this, Label("IKE2_STATUS\0"                       "operation of IKE version 2"),                              {IKE_STATUS_ENABLED,       IKE_STATUS_VARIANTS}};
  PortParam IKE_PORT                          {*this, Label("IKE_PORT\0"                          "IKE port number"),                                         {Default{500},             Range{1, 65535}}};
  PortParam NATT_PORT                         {*this, Label("NATT_PORT\0"                         "NAT traversal port number"),                               {Default{4500},            Range{1, 65535}}};
  UIntParam EXCHANGE_TIMEOUT                  {*this, Label("EXCHANGE_TIMEOUT\0"                  "exchange time-out"),                                       {Default{60},              Range{5, 600}}};
  UIntParam SHORT_EXCHANGE_TIMEOUT            {*this, Label("SHORT_EXCHANGE_TIMEOUT\0"            "short exchange time-out"),                                 {Default{5},               Range{3, 60}}};
  UIntParam MAX_HALFOPEN                      {*this, Label("MAX_HALFOPEN\0"                      "limit of half-open exchanges"),                            {Default{64},              Range{0, 256}}};
  UIntParam WNDSIZE_INITIATOR                 {*this, Label("WNDSIZE_INITIATOR\0"                 "window size as initiator"),                                {Default{4},               Range{1, 16}}};
  UIntParam WNDSIZE_RESPONDER                 {*this, Label("WNDSIZE_RESPONDER\0"                 "window size as responder"),                                {Default{4},               Range{1, 16}}};
  EnumParam SERVERS_POLICY                    {*this, Label("SERVERS_POLICY\0"                    "policy for using the configured servers"),                 {SERVERS_POLICY_SEQ,       SERVERS_POLICY_VARIANTS}};
  EnumParam NATT_POLICY                       {*this, Label("NATT_POLICY\0"                       "NAT traversal policy"),                                    {NATT_POLICY_STD,          NATT_POLICY_VARIANTS}};
  EnumParam ERRNTF_POLICY                     {*this, Label("ERRNTF_POLICY\0"                     "error notification policy"),                               {ERRNTF_POLICY_10,         ERRNTF_POLICY_VARIANTS}};
  BoolParam IKE1_FRAGM_ENABLED                {*this, Label("IKE1_FRAGM_ENABLED\0"                "IKE version 1 fragmentation on or off"),                   true};
  EnumParam IKE2_FRAGMENTATION                {*this, Label("IKE2_FRAGMENTATION\0"                "IKE version 2 fragmentation mode"),                        {IKE2_FRAGM_AUTO,          IKE2_FRAGM_VARIANTS}};
  BoolParam IKE_LIFETIME_JITTER               {*this, Label("IKE_LIFETIME_JITTER\0"               "jitter on IKE lifetimes"),                                 true};
  BoolParam IPSEC_LIFETIME_JITTER             {*this, Label("IPSEC_LIFETIME_JITTER\0"             "jitter on IPsec lifetimes"),                               true};
  QcdSParam QCD_SECRET                        {*this, Label("QCD_SECRET\0"                        "the QCD secret"),                                          ""};
  BoolParam DPD_ENABLED                       {*this, Label("DPD_ENABLED\0"                       "dead-peer detection on or off"),                           true,                                                         FileOnly};
  UIntParam DPD_IDLE_TIME                     {*this, Label("DPD_IDLE_TIME\0"                     "idle time for dead-peer detection"),                       {Default{30},              Range{0, 600}},                    FileOnly};
  UIntParam NATKA_INTERVAL                    {*this, Label("NATKA_INTERVAL\0"                    "NAT keep-alive interval"),                                 {Default{20},              Range{1, 60}}};
  UIntParam IPSEC_PROV_TRAFFIC                {*this, Label("IPSEC_PROV_TRAFFIC\0"                "IPsec setting of that name"),                              {Default{2048},            Range{0, 16384}}};
  UIntParam IPSEC_DELAYED_DELETE_IN_SA        {*this, Label("IPSEC_DELAYED_DELETE_IN_SA\0"        "delay of the deletion of an inbound IPsec SA"),            {Default{5},               Range{0, 60}}};
  EnumParam IPSEC_ANTI_REPLAY_WINDOW          {*this, Label("IPSEC_ANTI_REPLAY_WINDOW\0"          "IPsec anti-replay window size"),                           {ANTI_REPLAY_WINDOW_64,    ANTI_REPLAY_WINDOW_SIZE_VARIANTS}};
  EnumParam IPSEC_TFC_PADDING                 {*this, Label("IPSEC_TFC_PADDING\0"                 "IPsec traffic flow confidentiality padding"),              {TFC_PADDING_OFF,          TFC_PADDING_VARIANTS}};
  BoolParam PERSISTENT_SA                     {*this, Label("PERSISTENT_SA\0"                     "persistent SAs on or off"),                                false};
  EnumParam IKECFG_DNS                        {*this, Label("IKECFG_DNS\0"                        "use of DNS servers from IKE configuration"),               {IKECFG_DNS_ENABLE_BEFORE, IKECFG_DNS_MODE_VARIANTS}};
  EnumParam CRL_PROCESSING                    {*this, Label("CRL_PROCESSING\0"                    "certificate revocation list processing"),                  {CRL_DISABLE,              CRL_PROC_VARIANTS}};
  BoolParam CERT_IMPORT_WITH_UNKNOWN_CRITICAL {*this, Label("CERT_IMPORT_WITH_UNKNOWN_CRITICAL\0" "import of certificates with unknown critical extensions"), false,                                                        FileOnly};
  BoolParam CERT_IGNORE_KEY_USAGE_BITS        {*this, Label("CERT_IGNORE_KEY_USAGE_BITS\0"        "ignore the key usage bits of certificates"),               false,                                                        FileOnly};
  BoolParam CERT_IGNORE_EXT_KEY_USAGE         {*this, Label("CERT_IGNORE_EXT_KEY_USAGE\0"         "ignore the extended key usage of certificates"),           true,                                                         FileOnly};
  BoolParam CERT_CHAIN_VERIFY_TRUSTED         {*this, Label("CERT_CHAIN_VERIFY_TRUSTED\0"         "verify certificate chains up to trusted certificates"),    false,                                                        FileOnly};
  UIntParam IPSEC_TRSEL_MAX_SIZE              {*this, Label("IPSEC_TRSEL_MAX_SIZE\0"              "maximum size of IPsec traffic selectors"),                 {Default{50},              Range{1, 255}},                    FileOnly};
  UIntParam IPSEC_MAX_ICV_CHECK_FAILS         {*this, Label("IPSEC_MAX_ICV_CHECK_FAILS\0"         "limit of IPsec ICV check failures"),                       {Default{512},             Range{0, 1000000000}},             FileOnly};
  // clang-format on
};

}  // namespace LPARAMS::Server
