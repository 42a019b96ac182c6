// The settings as the client holds them: the groups of the catalogue, found by name.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "lparams/catalogue/admin_group.h"
#include "lparams/catalogue/ike_group.h"
#include "lparams/catalogue/log_group.h"
#include "lparams/catalogue/policy_group.h"
#include "lparams/catalogue/update_group.h"
#include "lparams/catalogue/user_list.h"

namespace client {

/// Where a parameter stands: in a group, or in an entry of the user list.
struct Place {
  LPARAMS::Server::ParamGroup* group;  ///< one of Settings::groups
  std::optional<size_t> entry;         ///< the index, if the group is the user list
  std::string member;                  ///< its name in the group or the entry
};

/// All groups. They hold their defaults until the agent's values have been read into them: show no
/// value of a group that has not been read, and none that the bridge does not carry.
struct Settings {
  Settings();
  ~Settings();

  LPARAMS::Server::IKE_t ike;
  LPARAMS::Server::LOG_t log;
  LPARAMS::Server::UPDATE_t update;
  LPARAMS::Server::POLICY_t policy;
  LPARAMS::Server::ADMIN_t admin;
  LPARAMS::Server::ParamVector<LPARAMS::Server::USER_t> users{"USERS"};

  /// In the order of the settings file.
  const std::array<LPARAMS::Server::ParamGroup*, 6> groups{&ike,    &log,   &update,
                                                           &policy, &admin, &users};

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
