// What the settings and a text of them make of each other, told to the operator.
#pragma once

#include <cstddef>
#include <string>

#include "agent/base/log.h"
#include "inspection/finding.h"
#include "lparams/server.h"

namespace agent {

/// What a load of the text finds. More users than `maxUsers` are among it, here and below.
inspection::Findings reviewText(const std::string& text, size_t maxUsers);

/// What the next start would find in the text that the settings have now; before that, which values
/// it would not give back. Call it while nobody else writes settings.
inspection::Findings reviewReread(LPARAMS::Server::Server_t& settings, const std::string& text,
                                  size_t maxUsers);

/// What the settings have otherwise than the text of those before them.
inspection::Findings reviewEdit(const std::string& before, LPARAMS::Server::Server_t& settings);

/// The parameters that the next start would not give back, as a list of some; empty if there are
/// none.
std::string namesNotReadBack(const inspection::Findings& findings);

/// Adds findings to others, as many as are kept.
void append(inspection::Findings& findings, inspection::Findings more);

/// Logs some dozen of them, one line each, and then how many more there are. Those that are among
/// the `known` are left out, wherever in the text they stood.
void logFindings(Level level, const inspection::Findings& findings,
                 const inspection::Findings& known = {});

}  // namespace agent
