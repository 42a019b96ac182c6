// The settings as the client holds them: the groups of the catalogue, found by name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "lparams/catalogue/catalogue.h"

namespace client {

/// Where a parameter stands: in a group, or in an entry of the user list.
struct Place {
  LPARAMS::Server::ParamGroup* group;  ///< one of the catalogue's
  std::optional<size_t> entry;         ///< the index, if the group is the user list
  std::string member;                  ///< its name in the group or the entry
};

/// The catalogue, with the ways to its parameters. The groups hold their defaults until the agent's
/// values have been read into them: show no value of a group that has not been read, and none that
/// the bridge does not carry.
struct Settings : LPARAMS::Server::Catalogue {
  // Each of these throws Failure with the legal names if there is nothing with that name.

  LPARAMS::Server::ParamGroup& group(const std::string& name);

  /// Takes "IKE.IKE_PORT" or "USERS[1].NAME" apart. Everything is checked but that the list has the
  /// entry: that is known only once it has been read.
  Place place(const std::string& fullName);

  /// The parameter at the place. REQUIRES: its group has been read.
  LPARAMS::Server::Param& param(const Place& place);

  /// A parameter to try values for the place on, before its group is read: that writes it over.
  LPARAMS::Server::Param& example(const Place& place);

 private:
  LPARAMS::Server::USER_t anyEntry_;
};

/// The names of parameters or groups, for messages.
template <typename Params>
std::string namesOf(const Params& params) {
  std::string names;
  for (const LPARAMS::Server::Param* param : params) {
    if (!names.empty()) names += ", ";
    names += param->name;
  }
  return names;
}

/// The index that the text stands for, in decimal; nothing if it is not one.
std::optional<size_t> parseIndex(std::string_view text);

/// The name under which messages and the output know an entry of the user list: "USERS[1]".
std::string entryName(size_t index);

/// The member of a group that the bridge carries. `groupName` is what messages call the group.
LPARAMS::Server::Param& wireMember(LPARAMS::Server::ParamGroup& group, const std::string& member,
                                   const std::string& groupName);

}  // namespace client
