// Settings as texts, and loads of them without files.
#pragma once

#include <functional>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "lparams/catalogue/catalogue.h"

namespace fuzz {

/// What a load has made of a text.
struct Load {
  bool whole = false;
  std::string text;                  ///< as a save writes the values
  std::vector<std::string> reports;  ///< of the load
  size_t unread = 0;                 ///< bytes behind what it has read

  bool operator==(const Load&) const = default;
};

/// Has the module's classes load the stream.
Load load(std::istream& is, LPARAMS::Server::Catalogue& settings);
Load load(const std::string& text, LPARAMS::Server::Catalogue& settings);

/// Whether the module would read the text for ever. The agent loads none of these: they are no
/// whole settings files.
bool isEndless(std::string_view text);

std::string textOf(LPARAMS::Server::ParamGroup& settings);

/// Takes the settings through a save and a start: the load has to take the whole text without a
/// report, and the next save has to write the same. REQUIRES: `restarted` is at its defaults.
void requireToSurvive(LPARAMS::Server::ParamGroup& settings, LPARAMS::Server::Catalogue& restarted);

/// A catalogue with users, at their defaults.
void addUsers(LPARAMS::Server::Catalogue& settings, size_t count);

/// Calls `visit` with settings at their defaults, and then with each parameter at each of its
/// limits, names and some texts.
void forEachSetting(const std::function<void(LPARAMS::Server::Catalogue& settings,
                                             LPARAMS::Server::ParamGroup& group)>& visit);

/// The names of the catalogue, of groups, parameters and values.
std::vector<std::string> names();

}  // namespace fuzz
