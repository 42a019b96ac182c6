#include "editing/record_check.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <streambuf>
#include <utility>

#include "editing/standing_values.h"
#include "lparams/catalogue/catalogue.h"
#include "lparams/values/values.h"
#include "text/shortened.h"

namespace editing {
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

/// The settings' own group, as far as it is needed.
class Standing {
 public:
  explicit Standing(ParamGroup& group) : group_(group) {}

  /// Looks at the group when it is asked first: few writes hold what none may set.
  bool holds(const std::string& user, Param& param) {
    if (!values_) values_.emplace(group_);
    return values_->hold(user, param);
  }

  size_t users() const {
    const basekit::ObjectLevelLockable::Lock lock(group_);
    return static_cast<ParamVector<USER_t>&>(group_).items.size();
  }

 private:
  ParamGroup& group_;
  std::optional<StandingValues> values_;
};

/// `name` is that of the entry of the user list, which is read first; null elsewhere.
void readParam(CommandStreamIn& in, const std::string& subject, Param& param, Standing& standing,
               StStParam* name) {
  const char* const bytes = in.data + in.pos;
  readOrRefuse(in, subject, [&] { (void)param.read(in); });
  // The module reads every byte but 1 as false.
  const auto byte = static_cast<unsigned char>(param.getTypeId() == TYPE_BOOL ? *bytes : 0);
  if (byte <= 1 && mayBeWritten(param)) return;
  if (byte <= 1 && standing.holds(name != nullptr ? valueText(*name) : "", param)) return;
  if (byte <= 1 && isLegal(param)) {
    throw Refusal{subject + ": a text of " + std::to_string(valueText(param).size()) +
                  " bytes is too long; expected at most " + std::to_string(RecordCheck::MAX_TEXT)};
  }
  const bool isText = param.getTypeId() == TYPE_STRING;
  const std::string value = isSecret(param) ? "the value"
                            : isText        ? text::quoted(valueText(param))
                            : byte > 1      ? std::to_string(byte)
                                            : valueText(param);
  throw Refusal{subject + ": " + value + " is not legal; expected " + legalValues(param)};
}

/// Counts what is written to it.
class CountingBuffer : public std::streambuf {
 public:
  size_t count = 0;

 private:
  int_type overflow(int_type c) override {
    ++count;
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const char* /*text*/, std::streamsize size) override {
    count += static_cast<size_t>(size);
    return size;
  }
};

size_t textSizeOf(Param& group, int level) {
  CountingBuffer buffer;
  std::ostream text(&buffer);
  (void)group.save(text, level);
  return buffer.count;
}

void readMembers(CommandStreamIn& in, const std::string& subject, ParamGroup& group,
                 Standing& standing, StStParam* name = nullptr) {
  for (Param* param : group.wireParams) {
    readParam(in, subject + "." + param->name, *param, standing, name);
  }
}

/// Returns the size of their text.
size_t readUsers(CommandStreamIn& in, const std::string& subject, size_t maxUsers,
                 Standing& standing) {
  uint32_t count = 0;
  readOrRefuse(in, subject, [&] { take(in, count); });
  if (count > maxUsers && count > standing.users()) {
    throw Refusal{subject + ": " + std::to_string(count) +
                  " entries are too many; expected at most " + std::to_string(maxUsers)};
  }
  USER_t user;
  size_t size = 0;
  for (uint32_t i = 0; i < count; ++i) {
    readMembers(in, subject + "[" + std::to_string(i) + "]", user, standing, &user.NAME);
    size += textSizeOf(user, 2);
  }
  return size;
}

ParamGroup& findGroup(const Catalogue& catalogue, const std::string& name) {
  std::string names;
  for (ParamGroup* group : catalogue.groups()) {
    if (name == group->name) return *group;
    names += (names.empty() ? "" : ", ") + std::string(group->name);
  }
  throw Refusal{"there is no group " + text::quoted(name) + "; expected one of " + names};
}

/// Returns the size of the group's text.
size_t check(const std::string& input, const Catalogue& settings, size_t maxUsers) {
  CommandStreamIn in(input);
  std::string name;
  readOrRefuse(in, "the group's name", [&] { take(in, name); });
  const Catalogue catalogue;
  ParamGroup& group = findGroup(catalogue, name);
  Standing standing(findGroup(settings, name));
  size_t size = 0;
  if (&group == catalogue.USERS) {
    size = readUsers(in, name, maxUsers, standing);
  } else {
    readMembers(in, name, group, standing);
  }
  if (in.pos < in.size) {
    throw Refusal{name + ": " + std::to_string(in.size - in.pos) +
                  " bytes follow the end of the record; expected none"};
  }
  return size + textSizeOf(group, 1);
}

}  // namespace

RecordCheck::Finding RecordCheck::look(const std::string& input) const {
  try {
    return {{}, check(input, settings_, maxUsers_)};
  } catch (Refusal& refused) {
    return {std::move(refused.inWords), 0};
  }
}

size_t RecordCheck::textSizeOf(ParamGroup& group) { return editing::textSizeOf(group, 1); }

std::string RecordCheck::refusalOfSize(const std::map<std::string_view, size_t>& textSizes) const {
  std::string names;
  size_t replaced = 0;
  for (const auto& [group, size] : textSizes) {
    names += (names.empty() ? "" : ", ") + std::string(group);
    replaced += size;
  }
  size_t sum = replaced;
  size_t now = 0;  // those that would be replaced
  for (ParamGroup* each : settings_.groups()) {
    (textSizes.contains(each->name) ? now : sum) += textSizeOf(*each);
  }
  if (sum <= MAX_SETTINGS_TEXT || replaced <= now) return {};
  return names + ": the settings would be a text of " + std::to_string(sum) + " bytes, " +
         std::to_string(replaced) + " of them for " +
         (textSizes.size() == 1 ? "this group" : "these groups") + "; expected at most " +
         std::to_string(MAX_SETTINGS_TEXT);
}

}  // namespace editing
