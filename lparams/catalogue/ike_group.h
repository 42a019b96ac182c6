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
