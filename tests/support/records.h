// Groups and the bytes in which the bridge carries them, for tests that speak to the agent as a
// client of records does.
#pragma once

#include <stdexcept>
#include <string>

#include "lparams/catalogue/catalogue.h"

namespace testing_support {

/// A catalogue at its defaults.
struct Settings : LPARAMS::Server::Catalogue {
  LPARAMS::Server::ParamGroup& group(const std::string& name) const {
    for (LPARAMS::Server::ParamGroup* group : groups()) {
      if (name == group->name) return *group;
    }
    throw std::out_of_range(name);
  }
};

/// The input of a command that reads a group: its name.
inline std::string encodeName(const LPARAMS::Server::ParamGroup& group) {
  std::string input;
  LPARAMS::Server::CommandStreamOut out{input};
  put(out, std::string(group.name));
  return input;
}

/// The input of a command that writes a group: its name and its record.
inline std::string encodeRecord(LPARAMS::Server::ParamGroup& group) {
  std::string input = encodeName(group);
  LPARAMS::Server::CommandStreamOut out{input};
  (void)group.write(out);
  return input;
}

/// Fills the group from its record. Throws if the bytes are not exactly one record.
inline void decodeRecord(LPARAMS::Server::ParamGroup& group, const std::string& record) {
  LPARAMS::Server::CommandStreamIn in(record);
  (void)group.read(in);
  if (in.pos != in.size) throw std::length_error("the record is too long");
}

}  // namespace testing_support
