#include "agent/bridge/record_check.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "agent/base/log.h"
#include "agent/base/param_words.h"
#include "lparams/params/enum_param.h"
#include "lparams/params/numeric_param.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;

/// What the check finds wrong, in words.
using Refusal = std::runtime_error;

/// The unread rest of a record.
class Cursor {
 public:
  explicit Cursor(std::string_view bytes) : rest_(bytes) {}

  size_t left() const { return rest_.size(); }

  /// `subject` is what the bytes should have held.
  std::string_view bytes(uint64_t count, const std::string& subject) {
    if (count > rest_.size()) {
      throw Refusal(subject + ": the record ends here; " + std::to_string(count) +
                    " bytes are needed and " + std::to_string(rest_.size()) + " are left");
    }
    const std::string_view taken = rest_.substr(0, static_cast<size_t>(count));
    rest_.remove_prefix(taken.size());
    return taken;
  }

  template <typename T>
  T number(const std::string& subject) {
    T value{};
    std::memcpy(&value, bytes(sizeof value, subject).data(), sizeof value);
    return value;
  }

  std::string_view text(const std::string& subject) {
    return bytes(number<uint32_t>(subject), subject);
  }

 private:
  std::string_view rest_;
};

void require(bool legal, const std::string& subject, int64_t value, const Param& param) {
  if (legal) return;
  throw Refusal(subject + ": " + std::to_string(value) + " is not legal; expected " +
                legalValuesOf(param));
}

template <typename Numeric, typename T>
void checkNumber(Cursor& record, const std::string& subject, const Param& param) {
  const auto& numeric = static_cast<const Numeric&>(param);
  const T value = record.number<T>(subject);
  require(value >= numeric.min && value <= numeric.max, subject, value, param);
}

bool hasValue(const Variant* table, int32_t value) {
  while (table->name != nullptr && table->value != value) ++table;
  return table->name != nullptr;
}

void checkText(Cursor& record, const std::string& subject, const Param& param) {
  const std::string_view text = record.text(subject);
  const auto* control = std::ranges::find_if(
      text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; });
  if (control == text.end()) return;
  // A secret is not repeated.
  const std::string value = param.getTypeId() == TYPE_SECRET ? "the value" : quoted(text);
  throw Refusal(subject + ": " + value + " has a control character at byte " +
                std::to_string(control - text.begin()) + "; expected " + legalValuesOf(param));
}

void checkParam(Cursor& record, const std::string& subject, const Param& param) {
  switch (param.getTypeId()) {
    case TYPE_BOOL: {
      const auto value = record.number<uint8_t>(subject);
      return require(value <= 1, subject, value, param);
    }
    case TYPE_USHORT:
      return checkNumber<PortParam, uint16_t>(record, subject, param);
    case TYPE_UINT:
      return checkNumber<UIntParam, uint32_t>(record, subject, param);
    case TYPE_INT: {
      const auto value = record.number<int32_t>(subject);
      return require(hasValue(static_cast<const EnumParam&>(param).variants, value), subject, value,
                     param);
    }
    case TYPE_STRING:
    case TYPE_SECRET:
      return checkText(record, subject, param);
    default:
      throw Refusal(subject + ": values of its type cannot be checked");
  }
}

void checkMembers(Cursor& record, const std::string& subject, const ParamGroup& group) {
  for (const Param* param : group.wireParams) {
    checkParam(record, subject + "." + param->name, *param);
  }
}

const Param* findGroup(const Server_t& server, std::string_view name) {
  const auto& groups = server.fileParams;
  const auto found =
      std::ranges::find_if(groups, [&](const Param* group) { return name == group->name; });
  return found == groups.end() ? nullptr : *found;
}

std::string groupNames(const Server_t& server) {
  std::string names;
  for (const Param* group : server.fileParams) {
    if (!names.empty()) names += ", ";
    names += group->name;
  }
  return names;
}

}  // namespace

RecordCheck::RecordCheck(Server_t& server, size_t maxUsers)
    : server_(server),
      maxUsers_(maxUsers),
      // The list makes an entry for every request; this one does not stay in it.
      user_(static_cast<USER_t*>(server.USERS->getParam(USER_t::GROUP_NAME))) {
  server.USERS->items.pop_back();
}

RecordCheck::~RecordCheck() { delete user_; }

std::string RecordCheck::refusal(std::string_view input) const {
  try {
    Cursor record(input);
    const std::string_view name = record.text("the group's name");
    const Param* group = findGroup(server_, name);
    if (group == nullptr) {
      throw Refusal("there is no group " + quoted(name) + "; expected one of " +
                    groupNames(server_));
    }
    if (group->getTypeId() == TYPE_USER_LIST) {
      const auto count = record.number<uint32_t>(group->name);
      if (count > maxUsers_) {
        throw Refusal(std::string(group->name) + ": " + std::to_string(count) +
                      " entries are too many; expected at most " + std::to_string(maxUsers_));
      }
      for (uint32_t i = 0; i < count; ++i) {
        checkMembers(record, std::string(group->name) + "[" + std::to_string(i) + "]", *user_);
      }
    } else {
      checkMembers(record, group->name, static_cast<const ParamGroup&>(*group));
    }
    if (record.left() > 0) {
      throw Refusal(std::string(group->name) + ": " + std::to_string(record.left()) +
                    " bytes follow the end of the record; expected none");
    }
    return {};
  } catch (const Refusal& refused) {
    return refused.what();
  }
}

}  // namespace agent
