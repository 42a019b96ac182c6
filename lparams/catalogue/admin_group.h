// Administration settings.
#pragma once

#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

/// The administrators' sessions, token passwords and group.
struct ADMIN_t : ParamGroup {
  ADMIN_t() : ParamGroup("ADMIN") {}

  // Order of rows = order in the file and on the wire. Do not sort, do not insert in the middle.
  // clang-format off
  UIntParam SESSION_EXPTIME              {*this, Label("SESSION_EXPTIME\0"),              {Default{10}, Range{0, 86400}}};
  BoolParam LOGIN_ON_SAVE_TOKEN_PASSWORD {*this, Label("LOGIN_ON_SAVE_TOKEN_PASSWORD\0"), true};
  StStParam ADMIN_GROUP                  {*this, Label("ADMIN_GROUP\0"),                  "admin"};
  // clang-format on
};

}  // namespace LPARAMS::Server
