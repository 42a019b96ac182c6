// The parameters of the settings, found by their names.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lparams/catalogue/catalogue.h"

namespace editing {

/// Leads from names to parameters: "IKE.IKE_PORT", "USERS[bob].PMP_TIMEOUT" for the user with that
/// name, "USERS[0].PMP_TIMEOUT" for the first one if no user is called "0". Knows the users by the
/// names that they had when it first needed one or that they were added with. Used by one thread,
/// while nobody else changes the user list.
class Parameters {
 public:
  /// REQUIRES: the catalogue outlives it.
  explicit Parameters(LPARAMS::Server::Catalogue& catalogue) : catalogue_(catalogue) {}

  struct Found {
    LPARAMS::Server::ParamGroup* group = nullptr;  ///< of the catalogue
    LPARAMS::Server::USER_t* user = nullptr;       ///< where the group is the user list
    LPARAMS::Server::Param* param = nullptr;       ///< null for a whole group or user
    std::string problem = {};                      ///< why nothing was found, in words
  };

  /// What the name stands for, which may also be that of a whole group ("IKE") or user
  /// ("USERS[bob]").
  Found find(std::string_view name);

  /// The user that the text within the brackets stands for; `full` is what messages call it.
  Found findUser(std::string_view key, std::string_view full);

  void add(LPARAMS::Server::USER_t& user);
  void remove(LPARAMS::Server::USER_t& user);

  /// "USERS[bob]": the name under which the user is found; with the index if no other is.
  std::string nameOf(const LPARAMS::Server::USER_t& user);

  /// The user's name, and how many users of that name stand before this one.
  std::pair<std::string, size_t> placeOf(const LPARAMS::Server::USER_t& user);

  /// The user at such a place; null if there is none.
  LPARAMS::Server::USER_t* at(const std::pair<std::string, size_t>& place);

 private:
  using User = LPARAMS::Server::USER_t;

  void needUsers();
  std::vector<std::string> userCandidates(const std::string& name, const std::string& user);
  std::string suggestionFor(std::string_view name);

  LPARAMS::Server::Catalogue& catalogue_;
  int suggestionsLeft_ = 10;  // a request may hold any number of mistakes
  bool knowsUsers_ = false;   // most requests name none
  std::map<std::string, std::vector<User*>, std::less<>> users_;  // by name, in list order
  std::map<const User*, std::string> names_;
};

}  // namespace editing
