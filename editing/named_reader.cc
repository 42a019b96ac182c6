#include "editing/named_reader.h"

#include <cstdint>
#include <utility>

namespace editing {

using namespace LPARAMS::Server;

std::vector<bridge::NamedValue> NamedReader::read(const bridge::Names& names) {
  for (const std::string& name : names) {
    const Parameters::Found found = parameters_.find(name);
    if (found.problem.empty()) {
      add(found);
    } else {
      mistakes_.add(found.problem);
    }
  }
  if (names.empty()) {
    for (ParamGroup* group : settings_.groups()) add({.group = group});
  }
  return std::move(values_);
}

void NamedReader::add(const Parameters::Found& found) {
  if (found.param != nullptr) return add(reader_.read(found));
  if (found.user != nullptr) return addMembers(*found.user, found);
  if (found.group->getTypeId() != TYPE_USER_LIST) return addMembers(*found.group, found);
  for (USER_t* user : static_cast<ParamVector<USER_t>&>(*found.group).items) {
    addMembers(*user, {.group = found.group, .user = user});
  }
  for (bridge::NamedValue& value : reader_.readRemovedUsers()) add(std::move(value));
}

void NamedReader::add(bridge::NamedValue value) {
  if (isTooLarge()) return;
  for (const auto& text : {value.running, value.saved, value.byDefault}) {
    size_ += text ? text->size() + sizeof(uint32_t) : 0;
  }
  size_ += value.name.size() + sizeof(uint32_t) + 1;
  values_.push_back(std::move(value));
}

void NamedReader::addMembers(const ParamGroup& owner, Parameters::Found found) {
  for (Param* param : owner.fileParams) {
    found.param = param;
    if (!isTooLarge()) add(reader_.read(found));
  }
}

}  // namespace editing
