// Source of the system policy, and the policy-management client.
#pragma once

#include "lparams/catalogue/variants.h"
#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

/// Where the system LSP comes from, and the settings of the PMP and DDP components.
struct POLICY_t : ParamGroup {
  POLICY_t() : ParamGroup("POLICY") {}

  // Order of rows = order in the file and on the wire. Do not sort, do not insert in the middle.
  // clang-format off
  EnumParam SYSTEM_LSP_SOURCE    {*this, "SYSTEM_LSP_SOURCE",    SOURCE_DDP,   LSP_SOURCE_VARIANTS};
  StStParam SYSTEM_LSP_FROM_FILE {*this, "SYSTEM_LSP_FROM_FILE", ""};
  StStParam PMP_SERVERS          {*this, "PMP_SERVERS",          ""};
  EnumParam PMP_LOGLEVEL         {*this, "PMP_LOGLEVEL",         LL_EVENTS,    LOG_LEVEL_VARIANTS};
  EnumParam PMP_AUTH             {*this, "PMP_AUTH",             PMPAUTH_SIG,  PMP_AUTH_VARIANTS};
  EnumParam PMP_AUTH_MODE        {*this, "PMP_AUTH_MODE",        PMPAUTH_MM,   PMP_AUTH_MODE_VARIANTS};
  EnumParam PMP_IDTYPE           {*this, "PMP_IDTYPE",           PMPID_KEY_ID, PMP_ID_TYPE_VARIANTS};
  StStParam PMP_IDDATA           {*this, "PMP_IDDATA",           ""};
  StStParam LOCAL_CERT_SUBJECT   {*this, "LOCAL_CERT_SUBJECT",   ""};
  StStParam PSK_NAME             {*this, "PSK_NAME",             ""};
  UIntParam PMP_TIMEOUT          {*this, "PMP_TIMEOUT",          Default{10},  Range{5, 4294967295}};
  EnumParam DDP_LOGLEVEL         {*this, "DDP_LOGLEVEL",         LL_DISABLED,  LOG_LEVEL_VARIANTS};
  // clang-format on
};

}  // namespace LPARAMS::Server
