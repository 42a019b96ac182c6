// The signals that ask the agent to end.
#pragma once

namespace agent {

/// SIGTERM, SIGINT and, unless it is ignored (nohup(1)), SIGHUP wait from here on until
/// acceptEndSignals(), also those that the process was started with as blocked: one that comes
/// while settings are loaded ends the agent as well as a later one. Call before the first thread
/// starts, and again when nobody handles them any more: the agent ends by itself then.
void holdEndSignals();

/// Call when they are handled.
void acceptEndSignals();

/// False if somebody wants the agent to outlive the terminal.
bool endsWithTerminal();

}  // namespace agent
