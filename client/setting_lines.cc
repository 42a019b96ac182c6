#include "client/setting_lines.h"

#include "client/values.h"
#include "lparams/values/values.h"
#include "text/escape.h"

namespace client {
namespace {

using LPARAMS::Server::HIDDEN;

constexpr const char* USER_LIST = "USERS";

}  // namespace

std::string settingLine(const bridge::NamedValue& of, bool secrets) {
  const bool shown = of.running && (!of.secret || secrets);
  const std::string value = shown ? *of.running : HIDDEN;
  if (text::escaped(value) == value && text::escaped(of.name) == of.name)
    return of.name + "=" + value + "\n";
  return "# " + text::escaped(of.name) + "=" + text::inQuotes(value) + "\n";
}

std::string settingLines(Store& store, const std::string& name, bool secrets) {
  const bridge::NamedValues found = store.get(name.empty() ? bridge::Names() : bridge::Names{name});
  std::string lines;
  bool users = false;
  for (const bridge::NamedValue& value : found.values) {
    if (!value.running && !value.secret) continue;  // of a user who was removed
    users = users || value.name.starts_with(USER_LIST);
    lines += settingLine(value, secrets);
  }
  if (!users && (name.empty() || name == USER_LIST)) lines += "# USERS (no entries)\n";
  return lines;
}

std::string settingDocument(Store& store, const std::string& name, bool secrets) {
  bridge::NamedValues found = store.get(name.empty() ? bridge::Names() : bridge::Names{name});
  for (bridge::NamedValue& value : found.values) {
    if (value.secret && !secrets) value.running.reset();
  }
  return printedJson(documentOf(found, CatalogueView(store.schema())));
}

}  // namespace client
