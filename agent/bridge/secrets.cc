#include "agent/bridge/secrets.h"

#include "lparams/catalogue/catalogue.h"
#include "lparams/values/values.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;

ParamGroup* find(const Catalogue& catalogue, std::string_view name) {
  for (ParamGroup* group : catalogue.groups()) {
    if (name == group->name) return group;
  }
  return nullptr;
}

void empty(const ParamGroup& group) {
  for (Param* param : group.wireParams) {
    if (isSecret(*param)) (void)setValue(*param, "");
  }
}

}  // namespace

std::string secretsOf(std::string_view group) {
  static const Catalogue catalogue;
  static const USER_t user;
  const ParamGroup* members = find(catalogue, group);
  if (members == nullptr) return {};
  if (members == catalogue.USERS) members = &user;
  std::string names;
  for (const Param* param : members->wireParams) {
    if (!isSecret(*param)) continue;
    if (!names.empty()) names += ", ";
    names += std::string(group) + "." + param->name;
  }
  return names;
}

std::string withoutSecrets(std::string_view group, const std::string& record) {
  const Catalogue catalogue;
  ParamGroup& values = *find(catalogue, group);
  CommandStreamIn in(record);
  (void)values.read(in);
  empty(values);
  for (const USER_t* user : catalogue.USERS->items) empty(*user);
  std::string filtered;
  CommandStreamOut out{filtered};
  (void)values.write(out);
  return filtered;
}

}  // namespace agent
