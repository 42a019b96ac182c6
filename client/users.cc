#include <algorithm>
#include <memory>

#include "client/assignment.h"
#include "client/commands.h"
#include "client/failure.h"
#include "client/settings.h"
#include "text/escape.h"

namespace client {
namespace {

using namespace LPARAMS::Server;

[[noreturn]] void refuse(const std::string& message) { throw Failure(ExitCode::Usage, message); }

auto hasName(const std::string& name) {
  return [&name](const USER_t* user) { return user->NAME.value == name; };
}

USER_t* findUser(const ParamVector<USER_t>& users, const std::string& nameOrIndex) {
  switch (std::ranges::count_if(users.items, hasName(nameOrIndex))) {
    case 0: {
      const std::optional<size_t> index = parseIndex(nameOrIndex);
      if (!index || *index >= users.items.size())
        refuse("there is no user " + text::inQuotes(nameOrIndex));
      return users.items[*index];
    }
    case 1:
      return *std::ranges::find_if(users.items, hasName(nameOrIndex));
    default:
      refuse("several users have the name " + text::inQuotes(nameOrIndex) + "; give the index");
  }
}

}  // namespace

void addUser(Store& store, const std::string& name, const std::vector<std::string>& fields) {
  auto user = std::make_unique<USER_t>();
  assign(user->NAME, name, "NAME");
  for (const std::string& field : fields) {
    const Assignment assignment = parseAssignment(field);
    assign(wireMember(*user, assignment.name, user->name), assignment.value, assignment.name);
  }
  if (user->NAME.value.empty()) refuse("a user needs a name");

  Settings settings;
  store.read(settings.userList);
  std::vector<USER_t*>& users = settings.userList.items;
  if (std::ranges::any_of(users, hasName(user->NAME.value))) {
    refuse("there is a user " + text::inQuotes(user->NAME.value) + " already");
  }
  users.push_back(user.get());
  (void)user.release();  // the list owns it now
  store.write(settings.userList);
}

void deleteUser(Store& store, const std::string& nameOrIndex) {
  Settings settings;
  store.read(settings.userList);
  listDel(settings.userList, findUser(settings.userList, nameOrIndex));
  store.write(settings.userList);
}

}  // namespace client
