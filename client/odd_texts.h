// New texts that do not show what they are.
#pragma once

#include <string>
#include <vector>

#include "bridge/named_values.h"

namespace client {

/// What the steps would make of the settings that there are `now`, in words: a line for each new
/// text with control characters beyond ASCII, marks of direction, or what is not UTF-8. The agent
/// takes them; what is ASCII is the agent's to refuse, which names what is legal.
std::string oddTexts(const std::vector<bridge::Change>& steps, const bridge::NamedValues& now);

/// Whether the text is none of these.
bool showsAsItIs(const std::string& text);

}  // namespace client
