// Software-update settings.
#pragma once

#include "lparams/catalogue/variants.h"
#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

/// Where updates come from, when, and what is done with them.
struct UPDATE_t : ParamGroup {
  UPDATE_t() : ParamGroup("UPDATE") {}

  // Order of rows = order in the file and on the wire. Do not sort, do not insert in the middle.
  // clang-format off
  UIntParam CHECK_UPDATE_INTERVAL     {*this, "CHECK_UPDATE_INTERVAL",     Default{1800},      Range{0, 4294967295}};
  StStParam PATH                      {*this, "PATH",                      ""};
  StStParam AVAILABLE_UPDATE_VERSION  {*this, "AVAILABLE_UPDATE_VERSION",  ""};
  StStParam DOWNLOADED_UPDATE_VERSION {*this, "DOWNLOADED_UPDATE_VERSION", ""};
  StStParam UPDATE_VERSION            {*this, "UPDATE_VERSION",            ""};
  StStParam SCHEDULE                  {*this, "SCHEDULE",                  ""};
  EnumParam SETTING                   {*this, "SETTING",                   UpSrv::DISABLED,    UPDATE_SETTING_VARIANTS};
  StStParam URL                       {*this, "URL",                       ""};
  EnumParam MODE                      {*this, "MODE",                      UpSrv::NOTIFY_ONLY, UPDATE_MODE_VARIANTS};
  StStParam AVAILABLE_UPDATE_NAME     {*this, "AVAILABLE_UPDATE_NAME",     ""};
  StStParam DOWNLOAD_PATH             {*this, "DOWNLOAD_PATH",             ""};
  StStParam UPDATE_URI                {*this, "UPDATE_URI",                ""};
  BoolParam VERIFY_DOWNLOADS          {*this, "VERIFY_DOWNLOADS",          true};
  StStParam MACHINE_ID_FILE           {*this, "MACHINE_ID_FILE",           "",                 FileOnly};
  StStParam MACHINE_ID_TYPE           {*this, "MACHINE_ID_TYPE",           "",                 FileOnly};
  // clang-format on
};

}  // namespace LPARAMS::Server
