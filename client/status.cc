#include <nlohmann/json.hpp>
#include <ostream>

#include "client/commands.h"
#include "client/failure.h"
#include "text/escape.h"

namespace client {
namespace {

using nlohmann::json;

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

json stateOf(Store& store) {
  json state = json::parse(store.status(), nullptr, false);
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

}  // namespace

void status(Store& store, std::ostream& out) {
  const json state = stateOf(store);
  for (const auto& [name, value] : state.items()) {
    if (name != LIST) out << text::escaped(name) << ": " << textOf(value) << '\n';
  }
}

void findings(Store& store, std::ostream& out) {
  const json state = stateOf(store);
  const json list = state.contains(LIST) ? state[LIST] : json::array();
  for (const json& finding : list) out << lineOf(finding) << '\n';
  if (state.contains(COUNT) && state[COUNT] > list.size()) {
    out << "and more: " << textOf(state[COUNT]) << " in all\n";
  }
}

void watch(Store& store, std::ostream& out) {
  store.subscribe();
  for (;;) {
    const bridge::Event event = store.nextEvent();
    out << text::escaped(event.group) << " revision " << event.revision << " by uid " << event.uid
        << " pid " << event.pid << std::endl;
  }
}

}  // namespace client
