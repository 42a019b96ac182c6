#include "client/settings.h"

#include <algorithm>
#include <charconv>

#include "client/failure.h"
#include "text/escape.h"

namespace client {

using namespace LPARAMS::Server;

ParamGroup& Settings::group(const std::string& name) {
  for (ParamGroup* group : groups()) {
    if (name == group->name) return *group;
  }
  throw Failure(ExitCode::Usage, "there is no group " + text::inQuotes(name) + "; the groups are " +
                                     namesOf(groups()));
}

Place Settings::place(const std::string& fullName) {
  const Failure malformed(ExitCode::Usage,
                          text::inQuotes(fullName) +
                              " is not the name of a parameter; write GROUP.NAME, or "
                              "USERS[INDEX].NAME for an entry of the user list");
  const size_t dot = fullName.find('.');
  if (dot == std::string::npos) throw malformed;

  const std::string_view head = std::string_view(fullName).substr(0, dot);
  const size_t bracket = std::min(head.find('['), head.size());
  ParamGroup& owner = group(std::string(head.substr(0, bracket)));
  Place place{&owner, std::nullopt, fullName.substr(dot + 1)};
  if (bracket < head.size()) {
    if (!head.ends_with(']')) throw malformed;
    place.entry = parseIndex(head.substr(bracket + 1, head.size() - bracket - 2));
    if (!place.entry) throw malformed;
  }
  if (place.entry.has_value() != (&owner == USERS)) throw malformed;
  (void)example(place);
  return place;
}

Param& Settings::example(const Place& place) {
  return wireMember(place.entry ? anyEntry_ : *place.group, place.member, place.group->name);
}

Param& Settings::param(const Place& place) {
  if (!place.entry) return wireMember(*place.group, place.member, place.group->name);
  if (*place.entry >= USERS->items.size()) {
    throw Failure(ExitCode::Usage, "there is no " + entryName(*place.entry) +
                                       "; entries in the list, counted from 0: " +
                                       std::to_string(USERS->items.size()));
  }
  return wireMember(*USERS->items[*place.entry], place.member, entryName(*place.entry));
}

std::optional<size_t> parseIndex(std::string_view text) {
  size_t index = 0;
  const char* const end = text.data() + text.size();
  const auto [parsed, error] = std::from_chars(text.data(), end, index);
  if (error != std::errc() || parsed != end) return std::nullopt;
  return index;
}

std::string entryName(size_t index) { return "USERS[" + std::to_string(index) + "]"; }

Param& wireMember(ParamGroup& group, const std::string& member, const std::string& groupName) {
  const auto isMember = [&](const Param* param) { return member == param->name; };
  for (Param* param : group.wireParams) {
    if (isMember(param)) return *param;
  }
  if (std::ranges::any_of(group.fileParams, isMember)) {
    throw Failure(ExitCode::Usage, groupName + "." + member +
                                       " stays in the settings file: the bridge does not carry it");
  }
  throw Failure(ExitCode::Usage, groupName + " has no parameter " + text::inQuotes(member) +
                                     "; it has " + namesOf(group.wireParams));
}

}  // namespace client
