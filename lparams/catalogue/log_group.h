// Logging settings.
#pragma once

#include "lparams/catalogue/shared_variants.h"
#include "lparams/params/enum_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

// The values travel on the bridge and the names stand in settings files: do not change the value or
// the name of an existing row.
// clang-format off

/// Character sets of log text.
/// The values are fixed character-set codes; UTF-8 is last although its code is the smallest.
enum Encoding : int32_t {
  CONVI_KOI8R = 7,
  CONVI_DOS   = 8,
  CONVI_1251  = 1251,
  CONVI_UTF8  = 6,
};
inline constexpr Variant ENCODINGS_VARIANTS[] = {
  {CONVI_KOI8R, "CONVI_KOI8R"},
  {CONVI_DOS,   "CONVI_DOS"},
  {CONVI_1251,  "CONVI_1251"},
  {CONVI_UTF8,  "CONVI_UTF8"},
  {0,           nullptr},
};

/// The language of log messages.
enum LogLanguage : int32_t {
  LOG_LANG_ENG = 0,
  LOG_LANG_RUS = 1,
};
inline constexpr Variant LOG_LANGUAGE_VARIANTS[] = {
  {LOG_LANG_ENG, "LOG_LANG_ENG"},
  {LOG_LANG_RUS, "LOG_LANG_RUS"},
  {0,            nullptr},
};

// clang-format on

/// How the agent and its kernel part log, and where to.
struct LOG_t : ParamGroup {
  LOG_t() : ParamGroup("LOG") {}

  // Order of rows = order in the file and on the wire. Do not sort, do not insert in the middle.
  // clang-format off
  EnumParam LOG_LEVEL              {*this, Label("LOG_LEVEL\0"),              {LL_EVENTS,         LOG_LEVEL_VARIANTS}};
  EnumParam LOG_LEVEL_KERNEL       {*this, Label("LOG_LEVEL_KERNEL\0"),       {LL_EVENTS,         LOG_LEVEL_VARIANTS}};
  BoolParam FILELOG_ON             {*this, Label("FILELOG_ON\0"),             true};
  UIntParam MAX_LOG_SIZE           {*this, Label("MAX_LOG_SIZE\0"),           {Default{10485760}, Range{0, 4294967295}}};
  UIntParam BACKUP_DEPTH           {*this, Label("BACKUP_DEPTH\0"),           {Default{5},        Range{0, 1000}}};
  BoolParam SYSLOG_ON              {*this, Label("SYSLOG_ON\0"),              false};
  EnumParam ENCODING_FROM          {*this, Label("ENCODING_FROM\0"),          {CONVI_UTF8,        ENCODINGS_VARIANTS}};
  EnumParam ENCODING_TO            {*this, Label("ENCODING_TO\0"),            {CONVI_UTF8,        ENCODINGS_VARIANTS}};
  UIntParam FACILITY               {*this, Label("FACILITY\0"),               {Default{0},        Range{0, 7}}};
  EnumParam LANGUAGE               {*this, Label("LANGUAGE\0"),               {LOG_LANG_ENG,      LOG_LANGUAGE_VARIANTS}};
  BoolParam WALL_ON                {*this, Label("WALL_ON\0"),                true};
  BoolParam VERBOSE_MODE_ON        {*this, Label("VERBOSE_MODE_ON\0"),        false};
  BoolParam VERBOSE_MODE_ON_KERNEL {*this, Label("VERBOSE_MODE_ON_KERNEL\0"), false};
  BoolParam SYSLOG_SINGLELINE      {*this, Label("SYSLOG_SINGLELINE\0"),      false};
  // clang-format on
};

}  // namespace LPARAMS::Server
