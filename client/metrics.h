// The agent's state for a monitoring system.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace client {

/// The state, a JSON object as status requests answer it, in the text format of Prometheus
/// (https://prometheus.io/docs/instrumenting/exposition_formats/, version 0.0.4), for the textfile
/// collector of its node exporter. What the state does not have is left out.
std::string metricsOf(const nlohmann::json& state);

/// The metrics of an agent that cannot be reached.
std::string metricsWithoutAgent();

}  // namespace client
