#include "client/change_report.h"

#include <algorithm>
#include <ostream>

#include "client/failure.h"
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

bool isChanged(const NamedValue& value) { return value.before != value.running; }

std::string userLine(const std::string& user, const char* what) {
  return "USERS[" + text::escaped(user) + "]: " + what + "\n";
}

}  // namespace

ChangeReport::ChangeReport(const Done& done, Unchanged unchanged) {
  for (const Change& step : done.steps) {
    if (step.kind == Change::RemoveUser) removed.push_back(step.name);
    if (step.kind != Change::AddUser) continue;
    const auto before = std::ranges::find(removed, step.name);
    (before == removed.end() ? added : moved).push_back(step.name);
    if (before != removed.end()) removed.erase(before);
  }
  for (const NamedValue& value : done.values.values) {
    if (unchanged == Told || isChanged(value)) values.push_back(value);
  }
}

bool ChangeReport::empty() const {
  return added.empty() && removed.empty() && moved.empty() &&
         std::ranges::none_of(values, isChanged);
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
    if (!isChanged(value)) continue;
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

void print(std::ostream& out, const ChangeReport& report, Kept kept, bool json, Store& store) {
  if (json) {
    Json document = documentOf(report, CatalogueView(store.schema()));
    document["saved"] = kept == Kept::Saved;
    out << printedJson(document);
  } else {
    const std::string lines = linesOf(report, kept);
    out << (lines.empty() ? "nothing to change\n" : lines);
  }
}

void saveAndPrint(std::ostream& out, const ChangeReport& report, const Saving& how, bool json,
                  Store& store) {
  try {
    store.save(how);
  } catch (const Failure&) {
    print(out, report, Kept::InMemory, json, store);
    throw;
  }
  print(out, report, Kept::Saved, json, store);
}

}  // namespace client
