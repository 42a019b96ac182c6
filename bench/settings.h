// The settings of a loaded module as plain data, from which every peer builds its document.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "lparams/params/variant.h"
#include "lparams/server.h"

namespace bench {

enum class Kind { Flag, Number, Name, Text };

struct Setting {
  std::string name;
  Kind kind;
  uint32_t number = 0;  ///< of a flag or a number
  std::string text;     ///< of a text, or the name of an enumeration's value
  uint32_t min = 0;     ///< of a number
  uint32_t max = 0;     ///< of a number
  const LPARAMS::Server::Variant* variants = nullptr;  ///< of an enumeration; the module's
  LPARAMS::Server::Param* param = nullptr;             ///< what it was copied from; the store's
};

struct Block {
  std::string name;  ///< users are numbered, so that every block has a name of its own
  std::vector<Setting> settings;
  LPARAMS::Server::Param* param = nullptr;  ///< what it was copied from; the store's
};

struct Settings {
  std::vector<Block> groups;
  std::vector<Block> users;
};

/// Copies the values of the root.
Settings settingsOf(LPARAMS::Server::Server_t& root);

/// Gives the new user number `index` values like those in use: a name, two texts, the rest at
/// defaults.
void fillUser(LPARAMS::Server::USER_t& user, unsigned index);

/// Bytes of the texts of a user, and of its parameters as objects.
size_t textBytes(LPARAMS::Server::USER_t& user);
size_t parameterBytes();

}  // namespace bench
