#include "bench/settings.h"

#include <stdexcept>

#include "lparams/values/visit.h"

namespace bench {
namespace {

using namespace LPARAMS::Server;

/// The parameter as plain data, by its class.
struct Plain {
  Setting operator()(const BoolParam& flag) const {
    return {flag.name, Kind::Flag, flag.value, {}, 0, 1, nullptr};
  }

  template <typename T, int TypeId>
  Setting operator()(const NumericParam<T, TypeId>& number) const {
    return {number.name, Kind::Number, number.value, {}, number.min, number.max, nullptr};
  }

  Setting operator()(const EnumParam& variable) const {
    const Variant* const row = findVariant(variable.variants, variable.value);
    if (row == nullptr) throw std::logic_error(std::string("no plain form of ") + variable.name);
    return {variable.name, Kind::Name, 0, row->name, 0, 0, variable.variants};
  }

  template <int TypeId>
  Setting operator()(const SimpleParam<std::string, TypeId>& text) const {
    return {text.name, Kind::Text, 0, text.value, 0, 0, nullptr};
  }
};

Block blockOf(ParamGroup& group, std::string name) {
  Block block{std::move(name), {}, &group};
  for (Param* param : group.fileParams) {
    block.settings.push_back(visit(*param, Plain()));
    block.settings.back().param = param;
  }
  return block;
}

}  // namespace

Settings settingsOf(Server_t& root) {
  Settings settings;
  for (ParamGroup* group : root.groups()) {
    if (group != root.USERS) settings.groups.push_back(blockOf(*group, group->name));
  }
  for (USER_t* user : root.USERS->items) {
    const auto number = std::to_string(settings.users.size());
    settings.users.push_back(blockOf(*user, std::string(USER_t::GROUP_NAME) + number));
  }
  return settings;
}

void fillUser(USER_t& user, unsigned index) {
  const std::string number = std::to_string(100'000 + index);
  user.NAME.value = "user-" + number;
  user.LSP_SOURCE.value = SOURCE_PMP;
  user.PMP_SERVERS.value = "policy-a.example.net,policy-b.example.net";
  user.PMP_LOGLEVEL.value = LL_DETAILS;
  user.PMP_IDDATA.value = "user-" + number + "@example.net";
  user.PMP_TIMEOUT.value = 30;
  user.PMP_CERT_SUBJECT.value = "C=EX,O=Example Networks,OU=Remote Access,CN=user-" + number;
}

size_t textBytes(USER_t& user) {
  size_t bytes = 0;
  for (const Setting& setting : blockOf(user, {}).settings) {
    if (setting.kind == Kind::Text) bytes += setting.text.size();
  }
  return bytes;
}

size_t parameterBytes() {
  // Everything of an entry but the group that it is.
  return sizeof(USER_t) - sizeof(ParamGroup);
}

}  // namespace bench
