// Source of the system policy, and the policy-management client.
#pragma once

#include "lparams/catalogue/shared_variants.h"
#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

/// Where the system LSP comes from, and the settings of the PMP and DDP components.
struct POLICY_t : ParamGroup {
  POLICY_t() : ParamGroup("POLICY") {}

  // Order of rows = order in the file and on the wire. Do not sort, do not insert in the middle.
  // clang-format off
  EnumParam SYSTEM_LSP_SOURCE    {*this, Label("SYSTEM_LSP_SOURCE\0"    "where the system LSP comes from"),                                      {SOURCE_DDP,   LSP_SOURCE_VARIANTS}};
  StStParam SYSTEM_LSP_FROM_FILE {*this, Label("SYSTEM_LSP_FROM_FILE\0" "the file that the system LSP is taken from when its source is a file"), ""};
  StStParam PMP_SERVERS          {*this, Label("PMP_SERVERS\0"          "the PMP servers"),                                                      ""};
  EnumParam PMP_LOGLEVEL         {*this, Label("PMP_LOGLEVEL\0"         "log level of the PMP component"),                                       {LL_EVENTS,    LOG_LEVEL_VARIANTS}};
  EnumParam PMP_AUTH             {*this, Label("PMP_AUTH\0"             "PMP authentication method"),                                            {PMPAUTH_SIG,  PMP_AUTH_VARIANTS}};
  EnumParam PMP_AUTH_MODE        {*this, Label("PMP_AUTH_MODE\0"        "PMP authentication mode"),                                              {PMPAUTH_MM,   PMP_AUTH_MODE_VARIANTS}};
  EnumParam PMP_IDTYPE           {*this, Label("PMP_IDTYPE\0"           "type of the PMP identity"),                                             {PMPID_KEY_ID, PMP_ID_TYPE_VARIANTS}};
  StStParam PMP_IDDATA           {*this, Label("PMP_IDDATA\0"           "the PMP identity data"),                                                ""};
  StStParam LOCAL_CERT_SUBJECT   {*this, Label("LOCAL_CERT_SUBJECT\0"   "subject of the local certificate"),                                     ""};
  StStParam PSK_NAME             {*this, Label("PSK_NAME\0"             "name of the pre-shared key"),                                           ""};
  UIntParam PMP_TIMEOUT          {*this, Label("PMP_TIMEOUT\0"          "PMP time-out"),                                                         {Default{10},  Range{5, 4294967295}}};
  EnumParam DDP_LOGLEVEL         {*this, Label("DDP_LOGLEVEL\0"         "log level of the DDP component"),                                       {LL_DISABLED,  LOG_LEVEL_VARIANTS}};
  // clang-format on
};

}  // namespace LPARAMS::Server
