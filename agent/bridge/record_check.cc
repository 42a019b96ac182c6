#include "agent/bridge/record_check.h"

#include <cstdint>
#include <utility>

#include "agent/base/log.h"
#include "lparams/catalogue/catalogue.h"
#include "lparams/values/values.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;

/// What the check finds wrong.
struct Refusal {
  std::string inWords;
};

/// Runs `read`, which takes what the subject consists of from the stream.
template <typename Read>
void readOrRefuse(const CommandStreamIn& in, const std::string& subject, Read read) {
  const uint32_t left = in.size - in.pos;
  try {
    read();
  } catch (const char*) {
    throw Refusal{subject + ": the record ends here; " + std::to_string(left) +
                  " bytes are left, which are too few"};
  }
}

void readParam(CommandStreamIn& in, const std::string& subject, Param& param) {
  const char* const bytes = in.data + in.pos;
  readOrRefuse(in, subject, [&] { (void)param.read(in); });

  // The module reads every byte but 1 as false.
  const auto byte = static_cast<unsigned char>(param.getTypeId() == TYPE_BOOL ? *bytes : 0);
  if (byte <= 1 && isLegal(param)) return;
  const bool isText = param.getTypeId() == TYPE_STRING;
  const std::string value = isSecret(param) ? "the value"
                            : isText        ? quoted(valueText(param))
                            : byte > 1      ? std::to_string(byte)
                                            : valueText(param);
  throw Refusal{subject + ": " + value + " is not legal; expected " + legalValues(param)};
}

void readMembers(CommandStreamIn& in, const std::string& subject, ParamGroup& group) {
  for (Param* param : group.wireParams) readParam(in, subject + "." + param->name, *param);
}

void readUsers(CommandStreamIn& in, const std::string& subject, size_t maxUsers) {
  uint32_t count = 0;
  readOrRefuse(in, subject, [&] { take(in, count); });
  if (count > maxUsers) {
    throw Refusal{subject + ": " + std::to_string(count) +
                  " entries are too many; expected at most " + std::to_string(maxUsers)};
  }
  USER_t user;
  for (uint32_t i = 0; i < count; ++i) {
    readMembers(in, subject + "[" + std::to_string(i) + "]", user);
  }
}

ParamGroup& findGroup(const Catalogue& catalogue, const std::string& name) {
  std::string names;
  for (ParamGroup* group : catalogue.groups()) {
    if (name == group->name) return *group;
    names += (names.empty() ? "" : ", ") + std::string(group->name);
  }
  throw Refusal{"there is no group " + quoted(name) + "; expected one of " + names};
}

void check(const std::string& input, size_t maxUsers) {
  CommandStreamIn in(input);
  std::string name;
  readOrRefuse(in, "the group's name", [&] { take(in, name); });
  const Catalogue catalogue;
  ParamGroup& group = findGroup(catalogue, name);
  if (&group == catalogue.USERS) {
    readUsers(in, name, maxUsers);
  } else {
    readMembers(in, name, group);
  }
  if (in.pos < in.size) {
    throw Refusal{name + ": " + std::to_string(in.size - in.pos) +
                  " bytes follow the end of the record; expected none"};
  }
}

}  // namespace

std::string RecordCheck::refusal(const std::string& input) const {
  try {
    check(input, maxUsers_);
    return {};
  } catch (Refusal& refused) {
    return std::move(refused.inWords);
  }
}

}  // namespace agent
