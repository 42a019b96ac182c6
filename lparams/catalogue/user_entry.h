// The settings of one user.
#pragma once

#include "lparams/catalogue/variants.h"
#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

/// An entry of the user list. Entries are told apart by NAME; all carry the same group name.
struct USER_t : ParamGroup {
  static constexpr const char* GROUP_NAME = "USER";

  USER_t() : ParamGroup(GROUP_NAME) {}

  // Order of rows = order in the file and on the wire. Do not sort, do not insert in the middle.
  // clang-format off
  StStParam NAME             {*this, "NAME",             ""};
  EnumParam LSP_SOURCE       {*this, "LSP_SOURCE",       SOURCE_DDP,   LSP_SOURCE_VARIANTS};
  StStParam LSP_FILE         {*this, "LSP_FILE",         ""};
  StStParam PMP_SERVERS      {*this, "PMP_SERVERS",      ""};
  EnumParam PMP_LOGLEVEL     {*this, "PMP_LOGLEVEL",     LL_EVENTS,    LOG_LEVEL_VARIANTS};
  EnumParam PMP_AUTH         {*this, "PMP_AUTH",         PMPAUTH_SIG,  PMP_AUTH_VARIANTS};
  EnumParam PMP_AUTH_MODE    {*this, "PMP_AUTH_MODE",    PMPAUTH_MM,   PMP_AUTH_MODE_VARIANTS};
  EnumParam PMP_IDTYPE       {*this, "PMP_IDTYPE",       PMPID_KEY_ID, PMP_ID_TYPE_VARIANTS};
  StStParam PMP_IDDATA       {*this, "PMP_IDDATA",       ""};
  UIntParam PMP_TIMEOUT      {*this, "PMP_TIMEOUT",      Default{10},  Range{5, 4294967295}};
  StStParam PMP_CERT_SUBJECT {*this, "PMP_CERT_SUBJECT", ""};
  StStParam PMP_PSK_NAME     {*this, "PMP_PSK_NAME",     ""};
  // clang-format on
};

}  // namespace LPARAMS::Server
