#include "editing/value_reader.h"

#include <utility>

#include "editing/copy_group.h"
#include "lparams/values/values.h"

namespace editing {

using namespace LPARAMS::Server;

namespace {

std::optional<std::string> textOf(ParamGroup* owner, const char* name) {
  if (owner == nullptr) return std::nullopt;
  return valueText(*owner->getParam(name));
}

}  // namespace

ValueReader::ValueReader(Parameters& running, std::shared_ptr<Catalogue> saved, bool seesSecrets)
    : running_(running), saved_(std::move(saved)), seesSecrets_(seesSecrets) {
  if (saved_) savedParameters_.emplace(*saved_);
}

bridge::NamedValue ValueReader::read(const Parameters::Found& found) {
  const char* const name = found.param->name;
  if (found.user == nullptr) {
    const ParamGroup& group = *found.group;
    return valuesOf(group.name, found.param, saved_ ? &counterpart(*saved_, group) : nullptr,
                    counterpart(defaults_, group), name);
  }
  USER_t* const saved =
      savedParameters_ ? savedParameters_->at(running_.placeOf(*found.user)) : nullptr;
  return valuesOf(running_.nameOf(*found.user), found.param, saved, defaultUser_, name);
}

std::vector<bridge::NamedValue> ValueReader::readRemovedUsers() {
  std::vector<bridge::NamedValue> values;
  if (!saved_) return values;
  for (USER_t* user : saved_->USERS->items) {
    if (running_.at(savedParameters_->placeOf(*user)) != nullptr) continue;
    const std::string owner = savedParameters_->nameOf(*user);
    for (const Param* param : user->fileParams) {
      values.push_back(valuesOf(owner, nullptr, user, defaultUser_, param->name));
    }
  }
  return values;
}

bridge::NamedValue ValueReader::valuesOf(std::string owner, Param* running, ParamGroup* saved,
                                         ParamGroup& byDefault, const char* name) const {
  Param& initial = *byDefault.getParam(name);
  bridge::NamedValue value{.name = std::move(owner) + "." + name, .secret = isSecret(initial)};
  if (value.secret && !seesSecrets_) return value;
  if (running != nullptr) value.running = valueText(*running);
  value.saved = textOf(saved, name);
  value.byDefault = valueText(initial);
  return value;
}

}  // namespace editing
