#include <ostream>

#include "client/commands.h"
#include "client/settings.h"
#include "lparams/values/values.h"
#include "text/escape.h"

namespace client {
namespace {

using namespace LPARAMS::Server;

std::string lineOf(Param& param, const std::string& fullName, bool secrets) {
  const std::string value = isSecret(param) && !secrets ? HIDDEN : valueText(param);
  if (hasControlBytes(value)) return "# " + fullName + "=" + text::inQuotes(value) + "\n";
  return fullName + "=" + value + "\n";
}

std::string linesOf(ParamGroup& group, const std::string& groupName, bool secrets) {
  std::string lines;
  for (Param* param : group.wireParams) {
    lines += lineOf(*param, groupName + "." + param->name, secrets);
  }
  return lines;
}

std::string linesOf(ParamVector<USER_t>& users, bool secrets) {
  if (users.items.empty()) return std::string("# ") + users.name + " (no entries)\n";
  std::string lines;
  for (size_t i = 0; i < users.items.size(); ++i) {
    lines += linesOf(*users.items[i], entryName(i), secrets);
  }
  return lines;
}

}  // namespace

void show(Store& store, std::ostream& out, const std::string& groupName, bool secrets) {
  Settings settings;
  ParamGroup* const only = groupName.empty() ? nullptr : &settings.group(groupName);
  std::string lines;
  for (ParamGroup* group : settings.groups()) {
    if (only != nullptr && group != only) continue;
    store.read(*group);
    lines += group == &settings.userList ? linesOf(settings.userList, secrets)
                                         : linesOf(*group, group->name, secrets);
  }
  out << lines;
}

void get(Store& store, std::ostream& out, const std::string& fullName) {
  Settings settings;
  const Place place = settings.place(fullName);
  store.read(*place.group);
  out << valueText(settings.param(place)) << '\n';
}

}  // namespace client
