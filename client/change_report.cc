#include "client/change_report.h"

#include <algorithm>

#include "client/values.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::Change;
using bridge::NamedValue;
using Json = CatalogueView::Json;

Json valueOf(const NamedValue& of, const std::optional<std::string>& value,
             const CatalogueView& catalogue) {
  if (of.secret || !value) return {};
  const Json* const param = catalogue.find(of.name);
  return param == nullptr ? Json(*value) : typedValue(*param, *value);
}

std::string userLine(const std::string& user, const char* what) {
  return "USERS[" + text::escaped(user) + "]: " + what + "\n";
}

}  // namespace

ChangeReport::ChangeReport(const Done& done) {
  for (const Change& step : done.steps) {
    if (step.kind == Change::RemoveUser) removed.push_back(step.name);
    if (step.kind != Change::AddUser) continue;
    const auto before = std::ranges::find(removed, step.name);
    (before == removed.end() ? added : moved).push_back(step.name);
    if (before != removed.end()) removed.erase(before);
  }
  for (const NamedValue& value : done.values.values) {
    (value.before == value.running ? unchanged : values).push_back(value);
  }
}

std::string linesOf(const ChangeReport& report, Kept kept) {
  std::string lines;
  for (const std::string& user : report.removed) lines += userLine(user, "removed");
  for (const std::string& user : report.added) lines += userLine(user, "added");
  for (const std::string& user : report.moved) lines += userLine(user, "moved");
  for (const NamedValue& value : report.values) {
    lines += changeLine(value, kept == Kept::Saved || value.running == value.saved) + "\n";
  }
  return lines;
}

Json documentOf(const ChangeReport& report, const CatalogueView& catalogue) {
  Json changes = Json::array();
  for (const NamedValue& value : report.values) {
    Json change = {{"name", value.name},
                   {"before", valueOf(value, value.before, catalogue)},
                   {"after", valueOf(value, value.running, catalogue)}};
    if (value.secret) change["secret"] = true;
    changes.push_back(std::move(change));
  }
  return {{"changed", !report.empty()},
          {"changes", std::move(changes)},
          {"added", report.added},
          {"removed", report.removed},
          {"moved", report.moved}};
}

}  // namespace client
