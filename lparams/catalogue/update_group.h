// Software-update settings.
#pragma once

#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

// The values travel on the bridge and the names stand in settings files: do not change the value or
// the name of an existing row.
// clang-format off

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

// clang-format on

/// Where updates come from, when, and what is done with them.
struct UPDATE_t : ParamGroup {
  UPDATE_t() : ParamGroup("UPDATE") {}

  // Order of rows = order in the file and on the wire. Do not sort, do not insert in the middle.
  // clang-format off
  UIntParam CHECK_UPDATE_INTERVAL     {*this, Label("CHECK_UPDATE_INTERVAL\0"),     {Default{1800},      Range{0, 4294967295}}};
  StStParam PATH                      {*this, Label("PATH\0"),                      ""};
  StStParam AVAILABLE_UPDATE_VERSION  {*this, Label("AVAILABLE_UPDATE_VERSION\0"),  ""};
  StStParam DOWNLOADED_UPDATE_VERSION {*this, Label("DOWNLOADED_UPDATE_VERSION\0"), ""};
  StStParam UPDATE_VERSION            {*this, Label("UPDATE_VERSION\0"),            ""};
  StStParam SCHEDULE                  {*this, Label("SCHEDULE\0"),                  ""};
  EnumParam SETTING                   {*this, Label("SETTING\0"),                   {UpSrv::DISABLED,    UPDATE_SETTING_VARIANTS}};
  StStParam URL                       {*this, Label("URL\0"),                       ""};
  EnumParam MODE                      {*this, Label("MODE\0"),                      {UpSrv::NOTIFY_ONLY, UPDATE_MODE_VARIANTS}};
  StStParam AVAILABLE_UPDATE_NAME     {*this, Label("AVAILABLE_UPDATE_NAME\0"),     ""};
  StStParam DOWNLOAD_PATH             {*this, Label("DOWNLOAD_PATH\0"),             ""};
  StStParam UPDATE_URI                {*this, Label("UPDATE_URI\0"),                ""};
  BoolParam VERIFY_DOWNLOADS          {*this, Label("VERIFY_DOWNLOADS\0"),          true};
  StStParam MACHINE_ID_FILE           {*this, Label("MACHINE_ID_FILE\0"),           "",                                            FileOnly};
  StStParam MACHINE_ID_TYPE           {*this, Label("MACHINE_ID_TYPE\0"),           "",                                            FileOnly};
  // clang-format on
};

}  // namespace LPARAMS::Server
