// What the bridge carries of a group.
#pragma once

#include <string>

#include "lparams/params/param_group.h"

namespace client {

/// The input of a command that reads a group: its name.
std::string encodeName(const LPARAMS::Server::ParamGroup& group);

/// The input of a command that writes a group: its name and its record.
std::string encodeRecord(LPARAMS::Server::ParamGroup& group);

/// Fills the group from its record. Throws Failure, with the group in part filled, if the bytes are
/// not exactly one record: the agent then has another catalogue than this program.
void decodeRecord(LPARAMS::Server::ParamGroup& group, const std::string& record);

}  // namespace client
