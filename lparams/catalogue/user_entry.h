// The settings of one user.
#pragma once

#include "lparams/catalogue/shared_variants.h"
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
  StStParam NAME             {*this, Label("NAME\0"),             ""};
  EnumParam LSP_SOURCE       {*this, Label("LSP_SOURCE\0"),       {SOURCE_DDP,   LSP_SOURCE_VARIANTS}};
  StStParam LSP_FILE         {*this, Label("LSP_FILE\0"),         ""};
  StStParam PMP_SERVERS      {*this, Label("PMP_SERVERS\0"),      ""};
  EnumParam PMP_LOGLEVEL     {*this, Label("PMP_LOGLEVEL\0"),     {LL_EVENTS,    LOG_LEVEL_VARIANTS}};
  EnumParam PMP_AUTH         {*this, Label("PMP_AUTH\0"),         {PMPAUTH_SIG,  PMP_AUTH_VARIANTS}};
  EnumParam PMP_AUTH_MODE    {*this, Label("PMP_AUTH_MODE\0"),    {PMPAUTH_MM,   PMP_AUTH_MODE_VARIANTS}};
  EnumParam PMP_IDTYPE       {*this, Label("PMP_IDTYPE\0"),       {PMPID_KEY_ID, PMP_ID_TYPE_VARIANTS}};
  StStParam PMP_IDDATA       {*this, Label("PMP_IDDATA\0"),       ""};
  UIntParam PMP_TIMEOUT      {*this, Label("PMP_TIMEOUT\0"),      {Default{10},  Range{5, 4294967295}}};
  StStParam PMP_CERT_SUBJECT {*this, Label("PMP_CERT_SUBJECT\0"), ""};
  StStParam PMP_PSK_NAME     {*this, Label("PMP_PSK_NAME\0"),     ""};
  // clang-format on
};

}  // namespace LPARAMS::Server
