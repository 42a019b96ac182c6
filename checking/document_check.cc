#include <algorithm>
#include <string>
#include <utility>

#include "checking/forms.h"
#include "documents/document.h"
#include "editing/parameters.h"
#include "editing/shown_name.h"
#include "lparams/params/enum_param.h"
#include "lparams/values/values.h"
#include "text/escape.h"

namespace checking {
namespace {

using namespace LPARAMS::Server;
using documents::User;
using documents::Value;
using inspection::Severity;

/// Looks at names and values as if they were set in settings at their defaults that have the
/// document's users.
class DocumentCheck {
 public:
  explicit DocumentCheck(Checked& checked) : checked_(checked) {}

  void look(const User& user) {
    USER_t* const entry = listAdd(settings_.userList);
    const std::string path = editing::shownName("USERS[" + user.name + "]");
    if (!setValue(entry->NAME, user.name)) {
      add(user.place, path, "the name is not " + legalValues(entry->NAME));
    }
    entry->NAME.value = user.name;  // so that what is said of this user is no mistake too
    parameters_.add(*entry);
    if (settings_.userList.items.size() == MAX_USERS + 1) {
      checked_.add({.severity = Severity::Warning,
                    .place = user.place,
                    .parameter = path,
                    .message = "more users than an agent takes (" + std::to_string(MAX_USERS) + ")",
                    .loses = false});
    }
  }

  void look(const Value& value) {
    const auto found = parameters_.find(value.name);
    const std::string name = editing::shownName(value.name);
    if (!found.problem.empty()) {
      // It begins with the name.
      return add(value.place, name,
                 found.problem.substr(found.problem.find(": ", name.size()) + 2));
    }
    if (found.param == nullptr) return add(value.place, name, "not a single parameter");
    if (value.kind == Value::Kept) return;
    if (value.text.size() > MAX_TEXT_SIZE) {
      return add(value.place, name,
                 "a text of " + std::to_string(value.text.size()) +
                     " bytes is too long; expected at most " + std::to_string(MAX_TEXT_SIZE));
    }
    if (found.user != nullptr && found.param == &found.user->NAME) return lookAtName(value, found);
    const std::string problem = problemOf(value, *found.param);
    if (problem.empty()) return;
    const bool secret = isSecret(*found.param);
    const std::string given = secret ? HIDDEN : value.text.substr(0, MAX_SHOWN);
    checked_.add({.place = value.place,
                  .parameter = name,
                  .message = (secret ? "the value" : text::inQuotes(given)) + problem,
                  .given = given});
  }

 private:
  /// A user is named by its key.
  void lookAtName(const Value& value, const editing::Parameters::Found& found) {
    if (value.text == found.user->NAME.value) return;
    add(value.place, editing::shownName(value.name),
        text::inQuotes(value.text.substr(0, MAX_SHOWN)) +
            " is not the name that the user goes by here");
  }

  /// What keeps the parameter from taking the value; empty if nothing does.
  static std::string problemOf(const Value& value, Param& param) {
    const bool isText = param.getTypeId() == TYPE_STRING || param.getTypeId() == TYPE_SECRET;
    if (isText && value.kind != Value::Text) return " is no text; write it in quotes";
    const bool isNumberOfName = value.kind == Value::Number && param.getTypeId() == TYPE_INT &&
                                hasNumber(static_cast<const EnumParam&>(param), value.text);
    if (isNumberOfName || setValue(param, value.text)) return {};
    return " is not " + legalValues(param);
  }

  static bool hasNumber(const EnumParam& param, const std::string& number) {
    const Variant* row = param.variants;
    while (row->name != nullptr && std::to_string(row->value) != number) ++row;
    return row->name != nullptr;
  }

  void add(inspection::Place place, std::string name, std::string message) {
    checked_.add({.place = place, .parameter = std::move(name), .message = std::move(message)});
  }

  Checked& checked_;
  Catalogue settings_;
  editing::Parameters parameters_{settings_};
};

}  // namespace

Checked checkDocument(std::string_view text, size_t kept) {
  Checked checked(Checked::Document, kept);
  const documents::Document document = documents::read(text, kept);
  for (const documents::Mistake& mistake : document.mistakes) {
    checked.add({.place = mistake.place, .message = mistake.text});
  }
  checked.leftOut += document.mistakeCount - document.mistakes.size();
  DocumentCheck names(checked);
  for (const User& user : document.users) names.look(user);
  for (const Value& value : document.values) names.look(value);
  return checked;
}

}  // namespace checking
