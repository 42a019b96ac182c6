#include <nlohmann/json.hpp>
#include <ostream>

#include "client/commands.h"
#include "client/failure.h"
#include "text/escape.h"

namespace client {
namespace {

using nlohmann::json;

std::string textOf(const json& value) {
  if (value.is_null()) return "no";
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_string()) return text::escaped(value.get<std::string>());
  return value.dump();
}

}  // namespace

void status(Store& store, std::ostream& out) {
  const json state = json::parse(store.status(), nullptr, false);
  if (!state.is_object()) throw Failure(ExitCode::NoAgent, "the agent's state cannot be read");
  for (const auto& [name, value] : state.items()) {
    out << text::escaped(name) << ": " << textOf(value) << '\n';
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
