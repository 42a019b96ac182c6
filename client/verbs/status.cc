// The state of an agent.
#include <iostream>
#include <nlohmann/json.hpp>

#include "client/failure.h"
#include "client/metrics.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "text/escape.h"

namespace client {
namespace {

using nlohmann::json;

constexpr const char* STATUS_NOTES =
    R"~(Whether saves are refused (degraded) and why, whether there are unsaved changes (changed),
the last save and how it failed, the sessions on the bridge, and how many things in the
settings file were not taken as they stand there (findings). --findings lists these: lines
that were ignored or changed, with their places, until a save has replaced the file.
savedHash and runningHash are equal on all gateways with equal settings.

--json prints the state as a JSON object. --metrics prints it for the textfile collector of a
Prometheus node exporter; if the agent does not answer, "lparams_up 0", and the exit status
says so too.

Examples:
  lparamsctl status
  lparamsctl status --metrics > /var/lib/node_exporter/lparams.prom.new
  lparamsctl status --json | jq -r .runningHash)~";

struct StatusGiven {
  bool findings = false;
  bool metrics = false;
  bool json = false;
};

constexpr const char* COUNT = "findings";
constexpr const char* LIST = "findingList";
constexpr const char* WORDS = "what";  // of a finding; its other members are details

std::string textOf(const json& value) {
  if (value.is_null()) return "no";
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_string()) return text::escaped(value.get<std::string>());
  return value.dump();
}

std::string inQuotes(const json& value) {
  return text::inQuotes(value.is_string() ? value.get<std::string>() : value.dump());
}

json stateOf(AgentStore& agent) {
  json state = json::parse(agent.status(), nullptr, false);
  if (!state.is_object())
    throw Failure(programs::EXIT_UNAVAILABLE, "the agent's state cannot be read");
  return state;
}

/// "line L, column C: PARAMETER: WHAT (NAME "TEXT" ...)".
std::string lineOf(const json& finding) {
  std::string place;
  std::string parameter;
  std::string words;
  std::string details;
  for (const auto& [name, value] : finding.items()) {
    if (name == "line") {
      place.insert(0, "line " + textOf(value));
    } else if (name == "column") {
      place += ", column " + textOf(value);
    } else if (name == "parameter") {
      parameter = textOf(value) + ": ";
    } else if (name == WORDS) {
      words = textOf(value);
    } else {
      details += (details.empty() ? "" : ", ") + text::escaped(name) + " " + inQuotes(value);
    }
  }
  if (!place.empty()) place += ": ";
  if (!details.empty()) details = " (" + details + ")";
  return place + parameter + words + details;
}

void printState(const json& state) {
  for (const auto& [name, value] : state.items()) {
    if (name != LIST) std::cout << text::escaped(name) << ": " << textOf(value) << '\n';
  }
}

json findingsOf(const json& state) { return state.contains(LIST) ? state[LIST] : json::array(); }

void printFindings(const json& state) {
  const json list = findingsOf(state);
  for (const json& finding : list) std::cout << lineOf(finding) << '\n';
  if (state.contains(COUNT) && state[COUNT] > list.size()) {
    std::cout << "and more: " << textOf(state[COUNT]) << " in all\n";
  }
}

void printMetrics(Context& context) {
  AgentStore& agent = context.agent();
  try {
    std::cout << metricsOf(stateOf(agent));
  } catch (const Failure&) {
    std::cout << metricsWithoutAgent();
    throw;
  }
}

void status(Context& context, const StatusGiven& given) {
  if (given.metrics) return printMetrics(context);
  const json state = stateOf(context.agent());
  if (given.json) {
    std::cout << printedJson(given.findings ? findingsOf(state) : state);
  } else {
    given.findings ? printFindings(state) : printState(state);
  }
}

}  // namespace

void addStatus(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "status", "Print the agent's state", STATUS_NOTES, status);
  command.add_flag("--findings", given->findings, "List what was found in the settings file");
  command.add_flag("--metrics", given->metrics, "Print metrics for Prometheus")
      ->excludes("--findings");
  addJson(command, given->json);
  command.get_option("--json")->excludes("--metrics");
}

}  // namespace client
