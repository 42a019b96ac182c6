// The metrics, read as a monitoring system reads them.
#include "client/metrics.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>

namespace client {
namespace {

using nlohmann::json;

/// The samples of a text in the format, by name and labels. Any line that is not as the format
/// wants it is a failure.
std::map<std::string, std::string> samplesIn(const std::string& text) {
  static const std::string NAME = "[a-zA-Z_:][a-zA-Z0-9_:]*";
  static const std::string LABEL = R"([a-zA-Z_][a-zA-Z0-9_]*="(?:[^"\\\n]|\\["\\n])*")";
  static const std::regex HELP("# HELP (" + NAME + ") [^\\n]+");
  static const std::regex TYPE("# TYPE (" + NAME + ") (gauge|counter)");
  static const std::regex SAMPLE("(" + NAME + ")(\\{" + LABEL + "(?:," + LABEL +
                                 ")*\\})? ([0-9]+)");
  EXPECT_TRUE(text.ends_with('\n'));
  std::map<std::string, std::string> samples;
  std::map<std::string, int> helps;
  std::map<std::string, std::string> types;
  std::istringstream lines(text);
  std::smatch found;
  for (std::string line; std::getline(lines, line);) {
    if (std::regex_match(line, found, HELP)) {
      EXPECT_EQ(++helps[found[1]], 1) << line;
    } else if (std::regex_match(line, found, TYPE)) {
      EXPECT_EQ(helps[found[1]], 1) << line << ": the help comes first";
      EXPECT_TRUE(types.emplace(found[1], found[2]).second) << line;
    } else if (std::regex_match(line, found, SAMPLE)) {
      EXPECT_TRUE(types.contains(found[1])) << line << ": the type comes first";
      EXPECT_EQ(types[found[1]] == "counter", found[1].str().ends_with("_total")) << line;
      EXPECT_TRUE(found[1].str().starts_with("lparams_")) << line;
      EXPECT_TRUE(samples.emplace(found[1].str() + found[2].str(), found[3]).second) << line;
    } else {
      ADD_FAILURE() << "not in the format: " << line;
    }
  }
  return samples;
}

const json STATE = {
    {"version", "1.0.0"},
    {"pid", 7},
    {"startTime", "2026-11-22T18:37:11Z"},
    {"uptime", 61},
    {"stateDir", "/var"},
    {"strict", true},
    {"catalogue", "cafe"},
    {"savedHash", "aa"},
    {"runningHash", "bb"},
    {"degraded", "no"},
    {"disk", nullptr},
    {"changed", true},
    {"lastSave", nullptr},
    {"sessions", 3},
    {"lastFailure", nullptr},
    {"watchers", 1},
    {"writes", 10},
    {"saves", 2},
    {"failedSaves", 1},
    {"refusals", 5},
    {"groupProblem", nullptr},
    {"logClosed", false},
    {"findings", 4},
    {"findingList", json::array()},
    {"runningHashWithSecrets", "dd"},
};

TEST(Metrics, AreThoseOfTheState) {
  EXPECT_EQ(samplesIn(metricsOf(STATE)),
            (std::map<std::string, std::string>{
                {"lparams_up", "1"},
                {R"(lparams_info{version="1.0.0",catalogue="cafe",state_dir="/var"})", "1"},
                {R"(lparams_settings_info{saved_hash="aa",running_hash="bb"})", "1"},
                {"lparams_degraded", "1"},
                {"lparams_unsaved_changes", "1"},
                {"lparams_findings", "4"},
                {"lparams_disk_failed", "0"},
                {"lparams_last_save_failed", "0"},
                {"lparams_start_timestamp_seconds", "1795372631"},
                {"lparams_uptime_seconds", "61"},
                {"lparams_sessions", "3"},
                {"lparams_watchers", "1"},
                {"lparams_strict", "1"},
                {"lparams_admin_group_failed", "0"},
                {"lparams_log_closed", "0"},
                {"lparams_writes_total", "10"},
                {"lparams_saves_total", "2"},
                {"lparams_failed_saves_total", "1"},
                {"lparams_refusals_total", "5"},
            }));
}

TEST(Metrics, AreInTheOperatorsDocument) {
  std::ifstream file(SOURCE_DIR "/docs/operations.md");
  const std::string document(std::istreambuf_iterator<char>(file), {});
  json state = STATE;
  state["lastSave"] = "1970-01-01T00:01:01Z";
  for (const auto& [sample, value] : samplesIn(metricsOf(state))) {
    const std::string name = "`" + sample.substr(0, sample.find('{')) + "`";
    EXPECT_NE(document.find(name), std::string::npos) << name;
  }
}

TEST(Metrics, HaveTheTimeOfTheLastSave) {
  json state = STATE;
  state["lastSave"] = "1970-01-01T00:01:01Z";
  EXPECT_EQ(samplesIn(metricsOf(state))["lparams_last_save_timestamp_seconds"], "61");
}

TEST(Metrics, EscapeWhatALabelCannotHold) {
  const json state = {{"version", "a\"b\\c\nd\x1b"}};
  EXPECT_EQ(samplesIn(metricsOf(state)).count(R"(lparams_info{version="a\"b\\c\\x0ad\\x1b"})"), 1U);
}

TEST(Metrics, LeaveOutWhatTheStateDoesNotHave) {
  EXPECT_EQ(samplesIn(metricsOf(json::object())).size(), 1U);
  const json strange = {{"writes", "many"}, {"changed", 1},   {"lastSave", "yesterday"},
                        {"version", 7},     {"startTime", 0}, {"savedHash", nullptr}};
  EXPECT_EQ(samplesIn(metricsOf(strange)).size(), 1U);
}

TEST(Metrics, WithoutAnAgentSaySo) {
  EXPECT_EQ(samplesIn(metricsWithoutAgent()),
            (std::map<std::string, std::string>{{"lparams_up", "0"}}));
}

}  // namespace
}  // namespace client
