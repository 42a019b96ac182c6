#include "schema/settings_hash.h"

#include "lparams/values/values.h"
#include "text/hash.h"

namespace schema {
namespace {

using namespace LPARAMS::Server;

struct Lines {
  std::string open;
  std::string whole;

  void add(const char* group, const ParamGroup& members) {
    for (Param* param : members.fileParams) {
      const std::string value = valueText(*param);
      const std::string line = std::string(group) + "." + param->name + "=" +
                               std::to_string(value.size()) + ":" + value + "\n";
      whole += line;
      if (!isSecret(*param)) open += line;
    }
  }
};

}  // namespace

SettingsHash settingsHashOf(const Catalogue& settings) {
  Lines lines;
  for (ParamGroup* group : settings.groups()) {
    const basekit::ObjectLevelLockable::Lock lock(*group);
    if (group != settings.USERS) {
      lines.add(group->name, *group);
      continue;
    }
    for (const USER_t* user : settings.USERS->items) lines.add(group->name, *user);
  }
  return {text::hashOf(lines.open), text::hashOf(lines.whole)};
}

}  // namespace schema
