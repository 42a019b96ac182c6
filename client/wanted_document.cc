#include "client/wanted_document.h"

#include <algorithm>
#include <optional>
#include <tuple>

#include "editing/shown_name.h"
#include "lparams/params/param.h"
#include "lparams/values/values.h"
#include "text/escape.h"

namespace client {
namespace {

using documents::Mistake;
using documents::Place;
using documents::Value;
using Json = CatalogueView::Json;
using namespace LPARAMS::Server;

/// The name of the enumeration's value with that number; the number itself if there is none.
std::string nameOf(const Json& param, const std::string& number) {
  for (const Json& value : param.at("values")) {
    if (value.at("number").dump() == number) return value.at("name");
  }
  return number;
}

}  // namespace

WantedDocument::WantedDocument(std::string name, documents::Document document,
                               const CatalogueView& catalogue)
    : name_(std::move(name)), document_(std::move(document)), mistakes_(document_.mistakes) {
  for (const documents::User& user : document_.users) {
    places_.emplace(editing::shownName("USERS[" + user.name + "]"), user.place);
  }
  for (Value& value : document_.values) {
    places_.emplace(editing::shownName(value.name), value.place);
    spell(value, catalogue);
  }
  // Each of these is among the document's own mistakes.
  std::erase_if(document_.users, [](const documents::User& user) { return user.name.empty(); });
  // A user is named by its key.
  std::erase_if(document_.values, [&](const Value& value) {
    const NamePieces pieces = takeApart(value.name);
    const bool isName = pieces.group == documents::USERS && pieces.member == "NAME";
    if (isName && value.kind != Value::Kept && value.text != pieces.user) {
      mistakes_.push_back({value.place, editing::shownName(value.name) + ": " +
                                            text::inQuotes(value.text) +
                                            " is not the name that the user goes by here; \"user "
                                            "rename\" renames"});
    }
    return isName;
  });
}

/// What fits no kind of value is left to the agent to refuse; but it takes every text.
void WantedDocument::spell(Value& value, const CatalogueView& catalogue) {
  const Json* const param = catalogue.find(value.name);
  if (param == nullptr) {
    if (value.kind == Value::Kept) value.kind = Value::Text;  // there is nothing to be kept
    return;
  }
  const int type = param->at("type").get<int>();
  if (value.kind == Value::Text) {
    const bool isHidden = type == TYPE_SECRET && value.text == HIDDEN;
    if (isHidden && document_.form != documents::Document::SettingsFile) value.kind = Value::Kept;
    return;
  }
  if (value.kind == Value::Kept) return;
  if (type == TYPE_STRING || type == TYPE_SECRET) {
    const std::string shown = type == TYPE_SECRET ? "the value" : value.text;
    mistakes_.push_back({value.place, editing::shownName(value.name) + ": " + shown +
                                          " is no text; write it in quotes"});
  } else if (type == TYPE_BOOL && value.kind == Value::Flag) {
    value.text = value.text == "true" ? "1" : "0";
  } else if (type == TYPE_INT && value.kind == Value::Number) {
    value.text = nameOf(*param, value.text);
  }
}

Wanted WantedDocument::wanted(const bridge::NamedValues& now) const {
  std::map<std::string_view, const bridge::NamedValue*> running;
  for (const bridge::NamedValue& value : now.values) running.emplace(value.name, &value);
  Wanted wanted;
  for (const documents::User& user : document_.users) wanted.users.push_back(user.name);
  for (const Value& value : document_.values) {
    if (value.kind != Value::Kept) {
      wanted.values.emplace_back(value.name, value.text);
      continue;
    }
    const auto found = running.find(value.name);
    if (found != running.end() && found->second->running) {
      wanted.values.emplace_back(value.name, *found->second->running);
    }
  }
  return wanted;
}

std::vector<Mistake> WantedDocument::mistakes(std::string_view refusal) const {
  std::vector<Mistake> all = mistakes_;
  while (!refusal.empty()) {
    const size_t end = std::min(refusal.find('\n'), refusal.size());
    const std::string_view line = refusal.substr(0, end);
    all.push_back({placeOf(line), std::string(line)});
    refusal.remove_prefix(std::min(end + 1, refusal.size()));
  }
  std::ranges::stable_sort(all, {}, [](const Mistake& mistake) {
    // What has no place comes last.
    return std::tuple(mistake.place.line == 0, mistake.place.line, mistake.place.column);
  });
  if (const size_t more = document_.mistakeCount - document_.mistakes.size(); more > 0) {
    all.push_back({{}, "and " + std::to_string(more) + " more mistakes"});
  }
  return all;
}

std::string WantedDocument::told(std::string_view refusal) const {
  std::string message;
  for (const auto& [place, text] : mistakes(refusal)) {
    message += text::escaped(name_);
    if (place.line > 0) {
      message.append(":").append(std::to_string(place.line));
      message.append(":").append(std::to_string(place.column));
    }
    message.append(": ").append(text).append("\n");
  }
  return message;
}

Failure WantedDocument::failure(std::string_view refusal) const {
  return nothingWritten(told(refusal));
}

/// Of what the agent's line begins with. A user's name may hold what ends it.
Place WantedDocument::placeOf(std::string_view mistake) const {
  for (size_t at = mistake.find(": "); at != std::string_view::npos;
       at = mistake.find(": ", at + 1)) {
    const auto found = places_.find(mistake.substr(0, at));
    if (found != places_.end()) return found->second;
  }
  return {};
}

}  // namespace client
