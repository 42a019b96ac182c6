// Logging settings.
#pragma once

#include "lparams/catalogue/variants.h"
#include "lparams/params/enum_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

/// How the agent and its kernel part log, and where to.
struct LOG_t : ParamGroup {
  LOG_t() : ParamGroup("LOG") {}

  // Order of rows = order in the file and on the wire. Do not sort, do not insert in the middle.
  // clang-format off
  EnumParam LOG_LEVEL              {*this, "LOG_LEVEL",              LL_EVENTS,         LOG_LEVEL_VARIANTS};
  EnumParam LOG_LEVEL_KERNEL       {*this, "LOG_LEVEL_KERNEL",       LL_EVENTS,         LOG_LEVEL_VARIANTS};
  BoolParam FILELOG_ON             {*this, "FILELOG_ON",             true};
  UIntParam MAX_LOG_SIZE           {*this, "MAX_LOG_SIZE",           Default{10485760}, Range{0, 4294967295}};
  UIntParam BACKUP_DEPTH           {*this, "BACKUP_DEPTH",           Default{5},        Range{0, 1000}};
  BoolParam SYSLOG_ON              {*this, "SYSLOG_ON",              false};
  EnumParam ENCODING_FROM          {*this, "ENCODING_FROM",          CONVI_UTF8,        ENCODINGS_VARIANTS};
  EnumParam ENCODING_TO            {*this, "ENCODING_TO",            CONVI_UTF8,        ENCODINGS_VARIANTS};
  UIntParam FACILITY               {*this, "FACILITY",               Default{0},        Range{0, 7}};
  EnumParam LANGUAGE               {*this, "LANGUAGE",               LOG_LANG_ENG,      LOG_LANGUAGE_VARIANTS};
  BoolParam WALL_ON                {*this, "WALL_ON",                true};
  BoolParam VERBOSE_MODE_ON        {*this, "VERBOSE_MODE_ON",        false};
  BoolParam VERBOSE_MODE_ON_KERNEL {*this, "VERBOSE_MODE_ON_KERNEL", false};
  BoolParam SYSLOG_SINGLELINE      {*this, "SYSLOG_SINGLELINE",      false};
  // clang-format on
};

}  // namespace LPARAMS::Server
