#include "bench/settings.h"

#include <stdexcept>

namespace bench {
namespace {

using namespace LPARAMS::Server;

template <typename Number>
Setting numberOf(const Param& param) {
  const auto& number = static_cast<const Number&>(param);
  return {param.name, Kind::Number, number.value, {}, number.min, number.max, nullptr};
}

template <typename Text>
Setting textOf(const Param& param) {
  return {param.name, Kind::Text, 0, static_cast<const Text&>(param).value, 0, 0, nullptr};
}

Setting settingOf(const Param& param) {
  switch (param.getTypeId()) {
    case TYPE_BOOL:
      return {param.name, Kind::Flag, static_cast<const BoolParam&>(param).value, {}, 0,
              1,          nullptr};
    case TYPE_USHORT:
      return numberOf<NumericParam<unsigned short, TYPE_USHORT>>(param);
    case TYPE_UINT:
      return numberOf<NumericParam<unsigned int, TYPE_UINT>>(param);
    case TYPE_STRING:
      return textOf<SimpleParam<std::string, TYPE_STRING>>(param);
    case TYPE_SECRET:
      return textOf<SimpleParam<std::string, TYPE_SECRET>>(param);
    case TYPE_INT: {
      const auto& variable = static_cast<const EnumParam&>(param);
      for (const Variant* row = variable.variants; row->name != nullptr; ++row) {
        if (row->value == variable.value) {
          return {param.name, Kind::Name, 0, row->name, 0, 0, variable.variants};
        }
      }
    }
  }
  throw std::logic_error(std::string("no plain form of ") + param.name);
}

Block blockOf(ParamGroup& group, std::string name) {
  Block block{std::move(name), {}, &group};
  for (Param* param : group.fileParams) {
    block.settings.push_back(settingOf(*param));
    block.settings.back().param = param;
  }
  return block;
}

}  // namespace

Settings settingsOf(Server_t& root) {
  Settings settings;
  for (Param* param : root.fileParams) {
    if (param->getTypeId() != TYPE_GROUP) continue;
    settings.groups.push_back(blockOf(static_cast<ParamGroup&>(*param), param->name));
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
