#include "tests/catalogue/expected_groups.h"

#include <stdexcept>
#include <utility>

#include "lparams/catalogue/catalogue.h"
#include "tests/support/readable_bytes.h"

namespace LPARAMS::Server {
namespace {

using Row = ExpectedParam;

Row enumeration(const char* name, Forms initial, Forms changed, const Variant* variants) {
  return {Kind::Enum, name, initial, changed, 0, 0, variants};
}

Row port(const char* name, Forms initial, Forms changed, unsigned min, unsigned max) {
  return {Kind::Port, name, initial, changed, min, max};
}

Row number(const char* name, Forms initial, Forms changed, unsigned min, unsigned max) {
  return {Kind::UInt, name, initial, changed, min, max};
}

Row flag(const char* name, Forms initial, Forms changed) {
  return {Kind::Bool, name, initial, changed};
}

Row line(const char* name, Forms initial, Forms changed) {
  return {Kind::Line, name, initial, changed};
}

Row secret(const char* name, Forms initial, Forms changed) {
  return {Kind::Secret, name, initial, changed};
}

Row fileOnly(Row row) {
  row.onWire = false;
  return row;
}

template <typename Group>
std::unique_ptr<ParamGroup> make() {
  return std::make_unique<Group>();
}

}  // namespace

// Columns: name; default and another value, each in the file and on the wire; limits or table.
// Written out here once more on purpose: what peers and old files rely on does not
// change because the catalogue does.
// clang-format off
const std::vector<ExpectedGroup>& expectedGroups() {
  static const std::vector<ExpectedGroup> groups = {
    {"IKE", make<IKE_t>, {
      enumeration("IKE1_STATUS",                         {"IKE_STATUS_ENABLED",       "02 00 00 00"}, {"IKE_STATUS_RESPONDER",    "01 00 00 00"}, IKE_STATUS_VARIANTS),
      enumeration("IKE2_STATUS",                         {"IKE_STATUS_ENABLED",       "02 00 00 00"}, {"IKE_STATUS_DISABLED",     "00 00 00 00"}, IKE_STATUS_VARIANTS),
      port("IKE_PORT",                                   {"500",                      "F4 01"},       {"65535",                   "FF FF"}, 1, 65535),
      port("NATT_PORT",                                  {"4500",                     "94 11"},       {"1",                       "01 00"}, 1, 65535),
      number("EXCHANGE_TIMEOUT",                         {"60",                       "3C 00 00 00"}, {"61",                      "3D 00 00 00"}, 5, 600),
      number("SHORT_EXCHANGE_TIMEOUT",                   {"5",                        "05 00 00 00"}, {"6",                       "06 00 00 00"}, 3, 60),
      number("MAX_HALFOPEN",                             {"64",                       "40 00 00 00"}, {"65",                      "41 00 00 00"}, 0, 256),
      number("WNDSIZE_INITIATOR",                        {"4",                        "04 00 00 00"}, {"5",                       "05 00 00 00"}, 1, 16),
      number("WNDSIZE_RESPONDER",                        {"4",                        "04 00 00 00"}, {"6",                       "06 00 00 00"}, 1, 16),
      enumeration("SERVERS_POLICY",                      {"SERVERS_POLICY_SEQ",       "01 00 00 00"}, {"SERVERS_POLICY_PAR2",     "02 00 00 00"}, SERVERS_POLICY_VARIANTS),
      enumeration("NATT_POLICY",                         {"NATT_POLICY_STD",          "01 00 00 00"}, {"NATT_POLICY_AUTO_FORCE",  "84 00 00 00"}, NATT_POLICY_VARIANTS),
      enumeration("ERRNTF_POLICY",                       {"ERRNTF_POLICY_10",         "0A 00 00 00"}, {"ERRNTF_POLICY_ALWAYS",    "FF FF FF FF"}, ERRNTF_POLICY_VARIANTS),
      flag("IKE1_FRAGM_ENABLED",                         {"1",                        "01"},          {"0",                       "00"}),
      enumeration("IKE2_FRAGMENTATION",                  {"IKE2_FRAGM_AUTO",          "01 00 00 00"}, {"IKE2_FRAGM_ALWAYS",       "02 00 00 00"}, IKE2_FRAGM_VARIANTS),
      flag("IKE_LIFETIME_JITTER",                        {"1",                        "01"},          {"0",                       "00"}),
      flag("IPSEC_LIFETIME_JITTER",                      {"1",                        "01"},          {"0",                       "00"}),
      secret("QCD_SECRET",                               {"",                         "00 00 00 00"}, {"a 1",                     "03 00 00 00 61 20 31"}),
      fileOnly(flag("DPD_ENABLED",                       {"1",                        ""},            {"0",                       ""})),
      fileOnly(number("DPD_IDLE_TIME",                   {"30",                       ""},            {"31",                      ""}, 0, 600)),
      number("NATKA_INTERVAL",                           {"20",                       "14 00 00 00"}, {"21",                      "15 00 00 00"}, 1, 60),
      number("IPSEC_PROV_TRAFFIC",                       {"2048",                     "00 08 00 00"}, {"4660",                    "34 12 00 00"}, 0, 16384),
      number("IPSEC_DELAYED_DELETE_IN_SA",               {"5",                        "05 00 00 00"}, {"6",                       "06 00 00 00"}, 0, 60),
      enumeration("IPSEC_ANTI_REPLAY_WINDOW",            {"2*32",                     "40 00 00 00"}, {"4*32",                    "80 00 00 00"}, ANTI_REPLAY_WINDOW_SIZE_VARIANTS),
      enumeration("IPSEC_TFC_PADDING",                   {"TFC_PADDING_OFF",          "00 00 00 00"}, {"TFC_PADDING_ON",          "01 00 00 00"}, TFC_PADDING_VARIANTS),
      flag("PERSISTENT_SA",                              {"0",                        "00"},          {"1",                       "01"}),
      enumeration("IKECFG_DNS",                          {"IKECFG_DNS_ENABLE_BEFORE", "02 00 00 00"}, {"IKECFG_DNS_ENABLE_AFTER", "03 00 00 00"}, IKECFG_DNS_MODE_VARIANTS),
      enumeration("CRL_PROCESSING",                      {"CRL_DISABLE",              "00 00 00 00"}, {"CRL_ENABLE",              "01 00 00 00"}, CRL_PROC_VARIANTS),
      fileOnly(flag("CERT_IMPORT_WITH_UNKNOWN_CRITICAL", {"0",                        ""},            {"1",                       ""})),
      fileOnly(flag("CERT_IGNORE_KEY_USAGE_BITS",        {"0",                        ""},            {"1",                       ""})),
      fileOnly(flag("CERT_IGNORE_EXT_KEY_USAGE",         {"1",                        ""},            {"0",                       ""})),
      fileOnly(flag("CERT_CHAIN_VERIFY_TRUSTED",         {"0",                        ""},            {"1",                       ""})),
      fileOnly(number("IPSEC_TRSEL_MAX_SIZE",            {"50",                       ""},            {"51",                      ""}, 1, 255)),
      fileOnly(number("IPSEC_MAX_ICV_CHECK_FAILS",       {"512",                      ""},            {"1000000000",              ""}, 0, 1000000000)),
    }},
    {"LOG", make<LOG_t>, {
      enumeration("LOG_LEVEL",        {"_LL_EVENTS",   "01 00 00 00"}, {"_LL_DETAILS",  "02 00 00 00"}, LOG_LEVEL_VARIANTS),
      enumeration("LOG_LEVEL_KERNEL", {"_LL_EVENTS",   "01 00 00 00"}, {"_LL_VERBOSE",  "03 00 00 00"}, LOG_LEVEL_VARIANTS),
      flag("FILELOG_ON",              {"1",            "01"},          {"0",            "00"}),
      number("MAX_LOG_SIZE",          {"10485760",     "00 00 A0 00"}, {"16909060",     "04 03 02 01"}, 0, 4294967295),
      number("BACKUP_DEPTH",          {"5",            "05 00 00 00"}, {"6",            "06 00 00 00"}, 0, 1000),
      flag("SYSLOG_ON",               {"0",            "00"},          {"1",            "01"}),
      enumeration("ENCODING_FROM",    {"CONVI_UTF8",   "06 00 00 00"}, {"CONVI_KOI8R",  "07 00 00 00"}, ENCODINGS_VARIANTS),
      enumeration("ENCODING_TO",      {"CONVI_UTF8",   "06 00 00 00"}, {"CONVI_1251",   "E3 04 00 00"}, ENCODINGS_VARIANTS),
      number("FACILITY",              {"0",            "00 00 00 00"}, {"7",            "07 00 00 00"}, 0, 7),
      enumeration("LANGUAGE",         {"LOG_LANG_ENG", "00 00 00 00"}, {"LOG_LANG_RUS", "01 00 00 00"}, LOG_LANGUAGE_VARIANTS),
      flag("WALL_ON",                 {"1",            "01"},          {"0",            "00"}),
      flag("VERBOSE_MODE_ON",         {"0",            "00"},          {"1",            "01"}),
      flag("VERBOSE_MODE_ON_KERNEL",  {"0",            "00"},          {"1",            "01"}),
      flag("SYSLOG_SINGLELINE",       {"0",            "00"},          {"1",            "01"}),
    }},
    {"UPDATE", make<UPDATE_t>, {
      number("CHECK_UPDATE_INTERVAL",   {"1800",               "08 07 00 00"}, {"4294967295",     "FF FF FF FF"}, 0, 4294967295),
      line("PATH",                      {"",                   "00 00 00 00"}, {"a 1",            "03 00 00 00 61 20 31"}),
      line("AVAILABLE_UPDATE_VERSION",  {"",                   "00 00 00 00"}, {"b\tc ",          "04 00 00 00 62 09 63 20"}),
      line("DOWNLOADED_UPDATE_VERSION", {"",                   "00 00 00 00"}, {"a 3",            "03 00 00 00 61 20 33"}),
      line("UPDATE_VERSION",            {"",                   "00 00 00 00"}, {"a 4",            "03 00 00 00 61 20 34"}),
      line("SCHEDULE",                  {"",                   "00 00 00 00"}, {"a 5",            "03 00 00 00 61 20 35"}),
      enumeration("SETTING",            {"UpSrv::DISABLED",    "0D 00 00 00"}, {"UpSrv::LSP",     "0E 00 00 00"}, UPDATE_SETTING_VARIANTS),
      line("URL",                       {"",                   "00 00 00 00"}, {"a 6",            "03 00 00 00 61 20 36"}),
      enumeration("MODE",               {"UpSrv::NOTIFY_ONLY", "04 00 00 00"}, {"UpSrv::NO_MODE", "00 00 00 00"}, UPDATE_MODE_VARIANTS),
      line("AVAILABLE_UPDATE_NAME",     {"",                   "00 00 00 00"}, {"a 7",            "03 00 00 00 61 20 37"}),
      line("DOWNLOAD_PATH",             {"",                   "00 00 00 00"}, {"a 8",            "03 00 00 00 61 20 38"}),
      line("UPDATE_URI",                {"",                   "00 00 00 00"}, {"a 9",            "03 00 00 00 61 20 39"}),
      flag("VERIFY_DOWNLOADS",          {"1",                  "01"},          {"0",              "00"}),
      fileOnly(line("MACHINE_ID_FILE",  {"",                   ""},            {"a 10",           ""})),
      fileOnly(line("MACHINE_ID_TYPE",  {"",                   ""},            {"a 11",           ""})),
    }},
    {"POLICY", make<POLICY_t>, {
      enumeration("SYSTEM_LSP_SOURCE", {"SOURCE_DDP",   "00 00 00 00"}, {"SOURCE_FILE",      "01 00 00 00"}, LSP_SOURCE_VARIANTS),
      line("SYSTEM_LSP_FROM_FILE",     {"",             "00 00 00 00"}, {"a 1",              "03 00 00 00 61 20 31"}),
      line("PMP_SERVERS",              {"",             "00 00 00 00"}, {"b\tc ",            "04 00 00 00 62 09 63 20"}),
      enumeration("PMP_LOGLEVEL",      {"_LL_EVENTS",   "01 00 00 00"}, {"_LL_DETAILS",      "02 00 00 00"}, LOG_LEVEL_VARIANTS),
      enumeration("PMP_AUTH",          {"PMPAUTH_SIG",  "00 00 00 00"}, {"PMPAUTH_PSK",      "01 00 00 00"}, PMP_AUTH_VARIANTS),
      enumeration("PMP_AUTH_MODE",     {"PMPAUTH_MM",   "00 00 00 00"}, {"PMPAUTH_AM",       "01 00 00 00"}, PMP_AUTH_MODE_VARIANTS),
      enumeration("PMP_IDTYPE",        {"PMPID_KEY_ID", "00 00 00 00"}, {"PMPID_KEY_ID_HEX", "05 00 00 00"}, PMP_ID_TYPE_VARIANTS),
      line("PMP_IDDATA",               {"",             "00 00 00 00"}, {"a 3",              "03 00 00 00 61 20 33"}),
      line("LOCAL_CERT_SUBJECT",       {"",             "00 00 00 00"}, {"a 4",              "03 00 00 00 61 20 34"}),
      line("PSK_NAME",                 {"",             "00 00 00 00"}, {"a 5",              "03 00 00 00 61 20 35"}),
      number("PMP_TIMEOUT",            {"10",           "0A 00 00 00"}, {"3600",             "10 0E 00 00"}, 5, 4294967295),
      enumeration("DDP_LOGLEVEL",      {"_LL_DISABLED", "00 00 00 00"}, {"_LL_VERBOSE",      "03 00 00 00"}, LOG_LEVEL_VARIANTS),
    }},
    {"ADMIN", make<ADMIN_t>, {
      number("SESSION_EXPTIME",            {"10",    "0A 00 00 00"},                {"86400", "80 51 01 00"}, 0, 86400),
      flag("LOGIN_ON_SAVE_TOKEN_PASSWORD", {"1",     "01"},                         {"0",     "00"}),
      line("ADMIN_GROUP",                  {"admin", "05 00 00 00 61 64 6D 69 6E"}, {"a 1",   "03 00 00 00 61 20 31"}),
    }},
    {"USER", make<USER_t>, {
      line("NAME",                 {"",             "00 00 00 00"}, {"a 1",              "03 00 00 00 61 20 31"}),
      enumeration("LSP_SOURCE",    {"SOURCE_DDP",   "00 00 00 00"}, {"SOURCE_FILE",      "01 00 00 00"}, LSP_SOURCE_VARIANTS),
      line("LSP_FILE",             {"",             "00 00 00 00"}, {"b\tc ",            "04 00 00 00 62 09 63 20"}),
      line("PMP_SERVERS",          {"",             "00 00 00 00"}, {"a 3",              "03 00 00 00 61 20 33"}),
      enumeration("PMP_LOGLEVEL",  {"_LL_EVENTS",   "01 00 00 00"}, {"_LL_DETAILS",      "02 00 00 00"}, LOG_LEVEL_VARIANTS),
      enumeration("PMP_AUTH",      {"PMPAUTH_SIG",  "00 00 00 00"}, {"PMPAUTH_PSK",      "01 00 00 00"}, PMP_AUTH_VARIANTS),
      enumeration("PMP_AUTH_MODE", {"PMPAUTH_MM",   "00 00 00 00"}, {"PMPAUTH_AM",       "01 00 00 00"}, PMP_AUTH_MODE_VARIANTS),
      enumeration("PMP_IDTYPE",    {"PMPID_KEY_ID", "00 00 00 00"}, {"PMPID_KEY_ID_HEX", "05 00 00 00"}, PMP_ID_TYPE_VARIANTS),
      line("PMP_IDDATA",           {"",             "00 00 00 00"}, {"a 4",              "03 00 00 00 61 20 34"}),
      number("PMP_TIMEOUT",        {"10",           "0A 00 00 00"}, {"3600",             "10 0E 00 00"}, 5, 4294967295),
      line("PMP_CERT_SUBJECT",     {"",             "00 00 00 00"}, {"a 5",              "03 00 00 00 61 20 35"}),
      line("PMP_PSK_NAME",         {"",             "00 00 00 00"}, {"a 6",              "03 00 00 00 61 20 36"}),
    }},
  };
  return groups;
}
// clang-format on

// The values are on the wire and the names in settings files, so both are written out here.
// clang-format off
const std::vector<ExpectedTable>& expectedTables() {
  static const std::vector<ExpectedTable> tables = {
    {"LSP_SOURCE_VARIANTS", LSP_SOURCE_VARIANTS, {
      {0, "SOURCE_DDP"}, {1, "SOURCE_FILE"}, {2, "SOURCE_PMP"}, {3, "SOURCE_TPN"},
    }},
    {"LOG_LEVEL_VARIANTS", LOG_LEVEL_VARIANTS, {
      {0, "_LL_DISABLED"}, {1, "_LL_EVENTS"}, {2, "_LL_DETAILS"}, {3, "_LL_VERBOSE"},
    }},
    {"PMP_AUTH_VARIANTS", PMP_AUTH_VARIANTS, {
      {0, "PMPAUTH_SIG"}, {1, "PMPAUTH_PSK"},
    }},
    {"PMP_AUTH_MODE_VARIANTS", PMP_AUTH_MODE_VARIANTS, {
      {0, "PMPAUTH_MM"}, {1, "PMPAUTH_AM"},
    }},
    {"PMP_ID_TYPE_VARIANTS", PMP_ID_TYPE_VARIANTS, {
      {0, "PMPID_KEY_ID"}, {5, "PMPID_KEY_ID_HEX"}, {1, "PMPID_IP"}, {2, "PMPID_DNS"},
      {3, "PMPID_EMAIL"}, {4, "PMPID_DN"},
    }},
    {"UPDATE_SETTING_VARIANTS", UPDATE_SETTING_VARIANTS, {
      {13, "UpSrv::DISABLED"}, {14, "UpSrv::LSP"}, {15, "UpSrv::LOCAL"},
    }},
    {"UPDATE_MODE_VARIANTS", UPDATE_MODE_VARIANTS, {
      {0, "UpSrv::NO_MODE"}, {1, "UpSrv::IMMEDIATELY"}, {2, "UpSrv::ON_SCHEDULE"},
      {3, "UpSrv::DOWNLOAD_ONLY"}, {4, "UpSrv::NOTIFY_ONLY"},
    }},
    {"ENCODINGS_VARIANTS", ENCODINGS_VARIANTS, {
      {7, "CONVI_KOI8R"}, {8, "CONVI_DOS"}, {1251, "CONVI_1251"}, {6, "CONVI_UTF8"},
    }},
    {"LOG_LANGUAGE_VARIANTS", LOG_LANGUAGE_VARIANTS, {
      {0, "LOG_LANG_ENG"}, {1, "LOG_LANG_RUS"},
    }},
    {"IKE_STATUS_VARIANTS", IKE_STATUS_VARIANTS, {
      {0, "IKE_STATUS_DISABLED"}, {2, "IKE_STATUS_ENABLED"}, {1, "IKE_STATUS_RESPONDER"},
    }},
    {"SERVERS_POLICY_VARIANTS", SERVERS_POLICY_VARIANTS, {
      {0, "SERVERS_POLICY_FIRST"}, {1, "SERVERS_POLICY_SEQ"}, {2, "SERVERS_POLICY_PAR2"},
      {4, "SERVERS_POLICY_PAR4"}, {8, "SERVERS_POLICY_PAR8"},
    }},
    {"NATT_POLICY_VARIANTS", NATT_POLICY_VARIANTS, {
      {0, "NATT_POLICY_DISABLED"}, {1, "NATT_POLICY_STD"}, {2, "NATT_POLICY_ALL"},
      {3, "NATT_POLICY_OLD"}, {4, "NATT_POLICY_AUTO"}, {129, "NATT_POLICY_STD_FORCE"},
      {130, "NATT_POLICY_ALL_FORCE"}, {131, "NATT_POLICY_OLD_FORCE"},
      {132, "NATT_POLICY_AUTO_FORCE"},
    }},
    {"ERRNTF_POLICY_VARIANTS", ERRNTF_POLICY_VARIANTS, {
      {0, "ERRNTF_POLICY_NEVER"}, {1, "ERRNTF_POLICY_1"}, {10, "ERRNTF_POLICY_10"},
      {100, "ERRNTF_POLICY_100"}, {-1, "ERRNTF_POLICY_ALWAYS"},
    }},
    {"IKE2_FRAGM_VARIANTS", IKE2_FRAGM_VARIANTS, {
      {0, "IKE2_FRAGM_DISABLED"}, {1, "IKE2_FRAGM_AUTO"}, {2, "IKE2_FRAGM_ALWAYS"},
    }},
    {"ANTI_REPLAY_WINDOW_SIZE_VARIANTS", ANTI_REPLAY_WINDOW_SIZE_VARIANTS, {
      {0, "0"}, {32, "1*32"}, {64, "2*32"}, {128, "4*32"}, {256, "8*32"}, {512, "16*32"},
    }},
    {"TFC_PADDING_VARIANTS", TFC_PADDING_VARIANTS, {
      {0, "TFC_PADDING_OFF"}, {1, "TFC_PADDING_ON"},
    }},
    {"IKECFG_DNS_MODE_VARIANTS", IKECFG_DNS_MODE_VARIANTS, {
      {0, "IKECFG_DNS_DISABLE"}, {1, "IKECFG_DNS_ENABLE"}, {2, "IKECFG_DNS_ENABLE_BEFORE"},
      {3, "IKECFG_DNS_ENABLE_AFTER"},
    }},
    {"CRL_PROC_VARIANTS", CRL_PROC_VARIANTS, {
      {0, "CRL_DISABLE"}, {1, "CRL_ENABLE"}, {2, "CRL_ENABLE_SOFT"},
    }},
  };
  return tables;
}
// clang-format on

const ExpectedGroup& expectedGroup(const std::string& name) {
  for (const ExpectedGroup& group : expectedGroups()) {
    if (name == group.name) return group;
  }
  throw std::out_of_range("no group " + name);
}

ChooseForm initiallyBut(std::map<std::string, Forms> others) {
  return [others = std::move(others)](const ExpectedParam& param) -> const Forms& {
    const auto found = others.find(param.name);
    return found == others.end() ? param.initial : found->second;
  };
}

std::string expectedNamesOf(const std::string& group) {
  std::string names;
  for (const ExpectedParam& param : expectedGroup(group).params) {
    if (param.onWire) names += (names.empty() ? "" : ", ") + std::string(param.name);
  }
  return names;
}

std::string missingReport(const std::string& group, size_t loaded) {
  const size_t total = expectedGroup(group).params.size();
  return "paramsMissing(" + std::to_string(total - loaded) + ", " + std::to_string(total) + ", " +
         group + ")";
}

std::string expectedFile(const ChooseForm& choose, const std::vector<ChooseForm>& users) {
  const ExpectedGroup& entry = expectedGroup(USER_t::GROUP_NAME);
  std::string text = "/ROOT=\n";
  for (const ExpectedGroup& group : expectedGroups()) {
    if (&group != &entry) text += group.text(1, choose);
  }
  text += "    /USERS=\n";
  for (const ChooseForm& user : users) text += entry.text(2, user);
  return text + "    end=\nend=\n";
}

std::string ExpectedGroup::shown(const std::string& groupName, const ChooseForm& choose) const {
  std::string lines;
  for (const ExpectedParam& param : params) {
    if (param.onWire) lines += groupName + "." + param.name + "=" + choose(param).text + "\n";
  }
  return lines;
}

std::string ExpectedGroup::text(int indent, const ChooseForm& choose) const {
  const std::string margin(static_cast<size_t>(indent) * 4, ' ');
  std::string text = margin + "/" + name + "=\n";
  for (const ExpectedParam& param : params) {
    text += margin + "    " + param.name + "=" + choose(param).text + "\n";
  }
  return text + margin + "end=\n";
}

std::string ExpectedGroup::record(const ChooseForm& choose) const {
  std::string record;
  for (const ExpectedParam& param : params) {
    if (param.onWire) record += testing_support::unhex(choose(param).bytes);
  }
  return record;
}

}  // namespace LPARAMS::Server
