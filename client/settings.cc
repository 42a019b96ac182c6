#include "client/settings.h"

#include <algorithm>
#include <charconv>

#include "client/failure.h"
#include "client/quote.h"
#include "lparams/params/module_objects.h"

namespace LPARAMS::Server {

// The parameter classes report the problems of a load here; the module defines it beside its other
// objects, which the client does not link, and the client loads no text.
constinit LoadLog* g_loadlog = nullptr;

}  // namespace LPARAMS::Server

namespace client {
namespace {

using namespace LPARAMS::Server;

template <typename Params>
std::string namesOf(const Params& params) {
  std::string names;
  for (const Param* param : params) {
    if (!names.empty()) names += ", ";
    names += param->name;
  }
  return names;
}

/// Takes "[1]" off the end of the text. Returns false, with the text unchanged, if there is none.
bool takeIndex(std::string& text, size_t& index) {
  const size_t bracket = text.find('[');
  if (bracket == std::string::npos || !text.ends_with(']')) return false;
  const char* const last = text.data() + text.size() - 1;
  const auto [end, error] = std::from_chars(text.data() + bracket + 1, last, index);
  if (error != std::errc() || end != last) return false;
  text.resize(bracket);
  return true;
}

}  // namespace

ParamGroup& Settings::group(const std::string& name) {
  const auto found = std::ranges::find_if(groups, [&](auto* group) { return name == group->name; });
  if (found != groups.end()) return **found;
  throw Failure(ExitCode::Usage,
                "there is no group " + quoted(name) + "; the groups are " + namesOf(groups));
}

Place Settings::place(const std::string& fullName) {
  const Failure malformed(ExitCode::Usage,
                          quoted(fullName) +
                              " is not the name of a parameter; write GROUP.NAME, or "
                              "USERS[INDEX].NAME for an entry of the user list");
  const size_t dot = fullName.find('.');
  if (dot == std::string::npos) throw malformed;

  std::string groupName = fullName.substr(0, dot);
  size_t index = 0;
  const bool indexed = takeIndex(groupName, index);
  ParamGroup& owner = group(groupName);
  if (indexed != (&owner == &users)) throw malformed;

  Place place{&owner, std::nullopt, fullName.substr(dot + 1)};
  if (indexed) {
    USER_t anyEntry;
    place.entry = index;
    (void)wireMember(anyEntry, place.member, owner.name);
  } else {
    (void)wireMember(owner, place.member, owner.name);
  }
  return place;
}

Param& Settings::param(const Place& place) {
  if (!place.entry) return wireMember(*place.group, place.member, place.group->name);
  if (*place.entry >= users.items.size()) {
    throw Failure(ExitCode::Usage, "there is no " + entryName(*place.entry) +
                                       "; entries in the list, counted from 0: " +
                                       std::to_string(users.items.size()));
  }
  return wireMember(*users.items[*place.entry], place.member, entryName(*place.entry));
}

std::string entryName(size_t index) { return "USERS[" + std::to_string(index) + "]"; }

Param& wireMember(ParamGroup& group, const std::string& member, const std::string& groupName) {
  const auto isMember = [&](const Param* param) { return member == param->name; };
  const auto found = std::ranges::find_if(group.wireParams, isMember);
  if (found != group.wireParams.end()) return **found;
  if (std::ranges::any_of(group.fileParams, isMember)) {
    throw Failure(ExitCode::Usage, groupName + "." + member +
                                       " stays in the settings file: the bridge does not carry it");
  }
  throw Failure(ExitCode::Usage, groupName + " has no parameter " + quoted(member) + "; it has " +
                                     namesOf(group.wireParams));
}

}  // namespace client
