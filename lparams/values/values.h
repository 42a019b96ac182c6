// Values of parameters as texts, and which of them are legal: for messages, for clients and for
// whoever checks what the module takes as it stands.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "lparams/params/param.h"

namespace LPARAMS::Server {

// Each of these REQUIRES a parameter of the catalogue that is not a group.

/// What the parameter means, one sentence without a full stop; empty if none is stated.
std::string_view meaningOf(const Param& param);

/// The legal values in words: "a whole number from 5 to 600", "0 or 1", "one of A, B, C", "one line
/// of text without control characters".
std::string legalValues(const Param& param);

/// Whether the value is one of those. Takes the parameter's lock.
bool isLegal(Param& param);

/// The value as the settings file spells it, strings byte for byte. An enumeration whose value has
/// no name gives its number, which setValue refuses. Takes the parameter's lock.
std::string valueText(Param& param);

/// Stores the value that the text stands for: what valueText gives, names and also "true" and
/// "false" in any case. Returns false, with the value unchanged, if it is not legal. Takes the
/// parameter's lock.
bool setValue(Param& param, const std::string& text);

/// What stands in the place of a secret that is not to be seen.
inline constexpr const char* HIDDEN = "(hidden)";

bool isSecret(const Param& param);

/// The longest text that a checked write may set, in bytes.
inline constexpr size_t MAX_TEXT_SIZE = 64 * 1024;

/// How many users a checked write may leave, unless an agent is told another number.
inline constexpr size_t MAX_USERS = 4096;

/// A byte that leaves its line or drives a terminal.
constexpr bool isControlByte(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }

bool hasControlBytes(std::string_view text);

}  // namespace LPARAMS::Server
