// Key-exchange and IPsec settings.
#pragma once

#include "lparams/catalogue/variants.h"
#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

/// The IKE versions 1 and 2, NAT traversal, IPsec and certificate checks.
struct IKE_t : ParamGroup {
  IKE_t() : ParamGroup("IKE") {}

  // Order of rows = order in the file and on the wire. Do not sort, do not insert in the middle.
  // clang-format off
  EnumParam IKE1_STATUS                       {*this, "IKE1_STATUS",                       IKE_STATUS_ENABLED,       IKE_STATUS_VARIANTS};
  EnumParam IKE2_STATUS                       {*this, "IKE2_STATUS",                       IKE_STATUS_ENABLED,       IKE_STATUS_VARIANTS};
  PortParam IKE_PORT                          {*this, "IKE_PORT",                          Default{500},             Range{1, 65535}};
  PortParam NATT_PORT                         {*this, "NATT_PORT",                         Default{4500},            Range{1, 65535}};
  UIntParam EXCHANGE_TIMEOUT                  {*this, "EXCHANGE_TIMEOUT",                  Default{60},              Range{5, 600}};
  UIntParam SHORT_EXCHANGE_TIMEOUT            {*this, "SHORT_EXCHANGE_TIMEOUT",            Default{5},               Range{3, 60}};
  UIntParam MAX_HALFOPEN                      {*this, "MAX_HALFOPEN",                      Default{64},              Range{0, 256}};
  UIntParam WNDSIZE_INITIATOR                 {*this, "WNDSIZE_INITIATOR",                 Default{4},               Range{1, 16}};
  UIntParam WNDSIZE_RESPONDER                 {*this, "WNDSIZE_RESPONDER",                 Default{4},               Range{1, 16}};
  EnumParam SERVERS_POLICY                    {*this, "SERVERS_POLICY",                    SERVERS_POLICY_SEQ,       SERVERS_POLICY_VARIANTS};
  EnumParam NATT_POLICY                       {*this, "NATT_POLICY",                       NATT_POLICY_STD,          NATT_POLICY_VARIANTS};
  EnumParam ERRNTF_POLICY                     {*this, "ERRNTF_POLICY",                     ERRNTF_POLICY_10,         ERRNTF_POLICY_VARIANTS};
  BoolParam IKE1_FRAGM_ENABLED                {*this, "IKE1_FRAGM_ENABLED",                true};
  EnumParam IKE2_FRAGMENTATION                {*this, "IKE2_FRAGMENTATION",                IKE2_FRAGM_AUTO,          IKE2_FRAGM_VARIANTS};
  BoolParam IKE_LIFETIME_JITTER               {*this, "IKE_LIFETIME_JITTER",               true};
  BoolParam IPSEC_LIFETIME_JITTER             {*this, "IPSEC_LIFETIME_JITTER",             true};
  QcdSParam QCD_SECRET                        {*this, "QCD_SECRET",                        ""};
  BoolParam DPD_ENABLED                       {*this, "DPD_ENABLED",                       true,                                           FileOnly};
  UIntParam DPD_IDLE_TIME                     {*this, "DPD_IDLE_TIME",                     Default{30},              Range{0, 600},        FileOnly};
  UIntParam NATKA_INTERVAL                    {*this, "NATKA_INTERVAL",                    Default{20},              Range{1, 60}};
  UIntParam IPSEC_PROV_TRAFFIC                {*this, "IPSEC_PROV_TRAFFIC",                Default{2048},            Range{0, 16384}};
  UIntParam IPSEC_DELAYED_DELETE_IN_SA        {*this, "IPSEC_DELAYED_DELETE_IN_SA",        Default{5},               Range{0, 60}};
  EnumParam IPSEC_ANTI_REPLAY_WINDOW          {*this, "IPSEC_ANTI_REPLAY_WINDOW",          ANTI_REPLAY_WINDOW_64,    ANTI_REPLAY_WINDOW_SIZE_VARIANTS};
  EnumParam IPSEC_TFC_PADDING                 {*this, "IPSEC_TFC_PADDING",                 TFC_PADDING_OFF,          TFC_PADDING_VARIANTS};
  BoolParam PERSISTENT_SA                     {*this, "PERSISTENT_SA",                     false};
  EnumParam IKECFG_DNS                        {*this, "IKECFG_DNS",                        IKECFG_DNS_ENABLE_BEFORE, IKECFG_DNS_MODE_VARIANTS};
  EnumParam CRL_PROCESSING                    {*this, "CRL_PROCESSING",                    CRL_DISABLE,              CRL_PROC_VARIANTS};
  BoolParam CERT_IMPORT_WITH_UNKNOWN_CRITICAL {*this, "CERT_IMPORT_WITH_UNKNOWN_CRITICAL", false,                                          FileOnly};
  BoolParam CERT_IGNORE_KEY_USAGE_BITS        {*this, "CERT_IGNORE_KEY_USAGE_BITS",        false,                                          FileOnly};
  BoolParam CERT_IGNORE_EXT_KEY_USAGE         {*this, "CERT_IGNORE_EXT_KEY_USAGE",         true,                                           FileOnly};
  BoolParam CERT_CHAIN_VERIFY_TRUSTED         {*this, "CERT_CHAIN_VERIFY_TRUSTED",         false,                                          FileOnly};
  UIntParam IPSEC_TRSEL_MAX_SIZE              {*this, "IPSEC_TRSEL_MAX_SIZE",              Default{50},              Range{1, 255},        FileOnly};
  UIntParam IPSEC_MAX_ICV_CHECK_FAILS         {*this, "IPSEC_MAX_ICV_CHECK_FAILS",         Default{512},             Range{0, 1000000000}, FileOnly};
  // clang-format on
};

}  // namespace LPARAMS::Server
