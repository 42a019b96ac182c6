#include <ostream>

#include "client/assignment.h"
#include "client/commands.h"
#include "client/failure.h"
#include "client/values.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::Change;

constexpr const char* NAME_FIELD = ".NAME";

void addFields(std::vector<Change>& changes, const std::string& user,
               const std::vector<std::string>& fields) {
  for (const std::string& field : fields) {
    auto change = parseAssignment(field);
    if (!change) throw Failure(programs::EXIT_USAGE, NO_ASSIGNMENT);
    change->name = userName(user) + "." + change->name;
    changes.push_back(*change);
  }
}

}  // namespace

std::string userName(const std::string& name) { return "USERS[" + name + "]"; }

void listUsers(Store& store, std::ostream& out, bool json) {
  CatalogueView::Json names = CatalogueView::Json::array();
  std::string lines;
  for (const bridge::NamedValue& value : store.get({"USERS"}).values) {
    if (!value.running || takeApart(value.name).member != "NAME") continue;
    names.push_back(*value.running);
    lines += text::escaped(*value.running) + "\n";
  }
  out << (json ? printedJson(names) : lines);
}

void addUser(Store& store, const std::string& name, const std::vector<std::string>& fields) {
  std::vector<Change> changes = {{Change::AddUser, name}};
  addFields(changes, name, fields);
  (void)store.set({{}, changes});
}

void setUser(Store& store, std::ostream& out, const std::string& name,
             const std::vector<std::string>& fields) {
  std::vector<Change> changes;
  addFields(changes, name, fields);
  for (const bridge::NamedValue& value : store.set({{}, changes}).values) {
    out << changeLine(value, value.running == value.saved) << '\n';
  }
}

void renameUser(Store& store, const std::string& name, const std::string& newName) {
  (void)store.set({{}, {{Change::Set, userName(name) + NAME_FIELD, newName}}});
}

void deleteUsers(Store& store, const std::vector<std::string>& names) {
  std::vector<Change> changes;
  changes.reserve(names.size());
  for (const std::string& name : names) changes.push_back({Change::RemoveUser, name});
  (void)store.set({{}, changes});
}

}  // namespace client
