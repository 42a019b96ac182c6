#include "agent/access/get_command.h"

#include <optional>
#include <utility>

#include "bridge/named_values.h"
#include "editing/mistakes.h"
#include "editing/parameters.h"
#include "editing/value_reader.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;
using bridge::Reason;
using bridge::Reply;

/// What the reply is made of. A group that is named a million times ends it early.
class Answer {
 public:
  explicit Answer(editing::ValueReader& reader) : reader_(reader) {}

  void add(const editing::Parameters::Found& found) {
    if (found.param != nullptr) return add(reader_.read(found));
    if (found.user != nullptr) return addMembers(*found.user, found);
    if (found.group->getTypeId() != TYPE_USER_LIST) return addMembers(*found.group, found);
    for (USER_t* user : static_cast<ParamVector<USER_t>&>(*found.group).items) {
      addMembers(*user, {.group = found.group, .user = user});
    }
    for (bridge::NamedValue& value : reader_.readRemovedUsers()) add(std::move(value));
  }

  bool isTooLarge() const { return size_ > bridge::MAX_REPLY_OUTPUT; }

  bridge::NamedValues values;

 private:
  void add(bridge::NamedValue value) {
    if (isTooLarge()) return;
    for (const auto& text : {value.running, value.saved, value.byDefault}) {
      size_ += text ? text->size() + sizeof(uint32_t) : 0;
    }
    size_ += value.name.size() + sizeof(uint32_t) + 1;
    values.values.push_back(std::move(value));
  }

  void addMembers(const ParamGroup& owner, editing::Parameters::Found found) {
    for (Param* param : owner.fileParams) {
      found.param = param;
      if (!isTooLarge()) add(reader_.read(found));
    }
  }

  editing::ValueReader& reader_;
  size_t size_ = 0;  // bytes of the output
};

}  // namespace

Reply GetCommand::execute(BridgeSession& session, const std::string& input) const {
  const auto names = bridge::decodeNames(input);
  if (!names) return {0, Reason::MalformedInput, "the names cannot be read to their end"};
  const bool seesSecrets = CommandService::mayWrite(session);
  auto saved = saved_.current();

  const MutexLock turn(service_.writeTurn());
  editing::Parameters parameters(settings_);
  editing::ValueReader reader(parameters, std::move(saved), seesSecrets);
  Answer answer(reader);
  editing::Mistakes mistakes;
  for (const std::string& name : *names) {
    const editing::Parameters::Found found = parameters.find(name);
    if (found.problem.empty()) {
      answer.add(found);
    } else {
      mistakes.add(found.problem);
    }
  }
  for (ParamGroup* group : settings_.groups()) {
    answer.values.revisions.push_back({group->name, service_.changes().revision(group->name)});
    if (names->empty()) answer.add({.group = group});
  }
  if (!mistakes.empty()) return {0, Reason::IllegalValue, mistakes.text()};
  if (answer.isTooLarge()) {
    return {0, Reason::ReplyTooLarge, "the values do not fit a frame; ask for fewer at once"};
  }
  return {1, Reason::None, {}, bridge::encode(answer.values)};
}

}  // namespace agent
