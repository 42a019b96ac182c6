#include "client/metrics.h"

#include <ctime>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "text/escape.h"

namespace client {
namespace {

using nlohmann::json;

/// How a member of the state becomes a number.
enum class As { Number, Flag, Failure, Time };

struct Metric {
  const char* name;  // behind the prefix
  const char* type;
  const char* member;  // of the state
  As as;
  const char* help;
};

// A counter ends in "_total", what has a unit in that, as the format's naming rules want it
// (https://prometheus.io/docs/practices/naming/).
// clang-format off
constexpr Metric METRICS[] = {
    {"degraded",                   "gauge",   "degraded",     As::Failure, "Whether saves are refused because the settings were not loaded whole."},
    {"unsaved_changes",            "gauge",   "changed",      As::Flag,    "Whether the running settings are not those of the settings file."},
    {"findings",                   "gauge",   "findings",     As::Number,  "Things in the settings file that a load does not take as they stand."},
    {"disk_failed",                "gauge",   "disk",         As::Failure, "Whether something could not be made durable at the start."},
    {"last_save_failed",           "gauge",   "lastFailure",  As::Failure, "Whether the last save failed or was refused."},
    {"last_save_timestamp_seconds", "gauge",  "lastSave",     As::Time,    "When the settings were last saved since the start."},
    {"start_timestamp_seconds",    "gauge",   "startTime",    As::Time,    "When the agent began to serve."},
    {"uptime_seconds",             "gauge",   "uptime",       As::Number,  "How long the agent has served."},
    {"sessions",                   "gauge",   "sessions",     As::Number,  "Sessions on the bridge, with the one that asks."},
    {"watchers",                   "gauge",   "watchers",     As::Number,  "Sessions that watch what happens."},
    {"strict",                     "gauge",   "strict",       As::Flag,    "Whether writes are checked."},
    {"admin_group_failed",         "gauge",   "groupProblem", As::Failure, "Whether the administrators' group cannot reach the socket."},
    {"log_closed",                 "gauge",   "logClosed",    As::Flag,    "Whether the agent has no log."},
    {"writes_total",               "counter", "writes",       As::Number,  "Writes of a group of settings since the start."},
    {"saves_total",                "counter", "saves",        As::Number,  "Saves that succeeded since the start."},
    {"failed_saves_total",         "counter", "failedSaves",  As::Number,  "Saves that failed or were refused since the start."},
    {"refusals_total",             "counter", "refusals",     As::Number,  "Requests that were refused since the start."},
};
// clang-format on

/// Of a time as the state has it, ISO 8601 in UTC: the seconds since 1970.
std::optional<std::time_t> secondsOf(const std::string& time) {
  std::tm fields{};
  const char* const end = ::strptime(time.c_str(), "%Y-%m-%dT%H:%M:%SZ", &fields);
  if (end == nullptr || *end != '\0') return std::nullopt;
  return ::timegm(&fields);
}

std::optional<std::string> numberOf(const json& value, As as) {
  switch (as) {
    case As::Number:
      if (value.is_number()) return value.dump();
      break;
    case As::Flag:
      if (value.is_boolean()) return value.get<bool>() ? "1" : "0";
      break;
    case As::Failure:
      return value.is_null() ? "0" : "1";
    case As::Time:
      if (!value.is_string()) break;
      if (const auto seconds = secondsOf(value.get<std::string>())) return std::to_string(*seconds);
  }
  return std::nullopt;
}

/// In the format only backslashes, double quotes and line feeds are escaped. A text that is fit for
/// a line holds none of the last.
std::string inQuotes(const std::string& text) {
  std::string quoted(1, '"');
  for (const char c : text::escaped(text)) {
    if (c == '\\' || c == '"') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

void addMetric(std::string& out, const Metric& metric, const std::string& value,
               const std::string& labels = "") {
  const std::string name = std::string("lparams_") + metric.name;
  out += "# HELP " + name + " " + metric.help + "\n# TYPE " + name + " " + metric.type + "\n" +
         name + labels + " " + value + "\n";
}

/// A metric whose labels say something and whose value is 1.
void addInfo(std::string& out, const json& state, const char* name, const char* help,
             std::initializer_list<std::pair<const char*, const char*>> labels) {
  std::string text;
  for (const auto& [label, member] : labels) {
    const auto found = state.find(member);
    if (found == state.end() || !found->is_string()) continue;
    text += text.empty() ? '{' : ',';
    text += std::string(label) + "=" + inQuotes(found->get<std::string>());
  }
  if (!text.empty()) addMetric(out, {name, "gauge", "", As::Number, help}, "1", text + "}");
}

constexpr Metric UP = {"up", "gauge", "", As::Number, "Whether the agent answers."};

}  // namespace

std::string metricsOf(const json& state) {
  std::string out;
  addMetric(out, UP, "1");
  addInfo(out, state, "info", "The agent, its catalogue and its state directory.",
          {{"version", "version"}, {"catalogue", "catalogue"}, {"state_dir", "stateDir"}});
  addInfo(out, state, "settings_info", "Hashes of the saved and of the running settings.",
          {{"saved_hash", "savedHash"}, {"running_hash", "runningHash"}});
  for (const Metric& metric : METRICS) {
    const auto found = state.find(metric.member);
    if (found == state.end()) continue;
    if (const auto value = numberOf(*found, metric.as)) addMetric(out, metric, *value);
  }
  return out;
}

std::string metricsWithoutAgent() {
  std::string out;
  addMetric(out, UP, "0");
  return out;
}

}  // namespace client
