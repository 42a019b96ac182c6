// The sub-commands of the client, each in a file of its own. Each throws Failure if it cannot do
// what it is for, and prints nothing unless it has all that it needs.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "client/store.h"

namespace client {

/// What `list` lists.
struct ListFilter {
  std::string glob = {};  ///< with "*" and "?", in any case; all if empty
  bool changed = false;   ///< only what is not at its default
  bool unsaved = false;   ///< only what is not as saved
  bool fileOnly = false;  ///< only what the records of the bridge do not carry
};

/// Prints a table of parameters: name, value, default, saved value and legal values; or the values
/// as one JSON document. The glob is for the full name, the name without its group, or the group.
void list(Store& store, std::ostream& out, const ListFilter& filter, bool json);

/// Prints what is known of each parameter of the name: of a parameter, with or without its group
/// ("USERS" for the fields of a user), or of a whole group. Values if an agent can be reached.
void describe(Store& store, std::ostream& out, const std::string& name, bool json);

/// Prints each value in a line of its own, byte for byte; or all as one JSON document.
void get(Store& store, std::ostream& out, const std::vector<std::string>& names, bool json);

/// Prints a group, a user, or everything if `name` is empty, as lines NAME=value that `set` takes
/// back. Secrets show only if `secrets`. What `set` would not take as it stands is a comment, a
/// line that begins with "#".
void show(Store& store, std::ostream& out, const std::string& name, bool secrets);

/// Carries out all assignments NAME=VALUE or none; "-" stands for the lines of `in`. Prints what
/// has changed. With `save` the agent saves then.
void set(Store& store, std::ostream& out, const std::vector<std::string>& assignments,
         std::istream& in, bool save);

/// Prints the users' names, one a line.
void listUsers(Store& store, std::ostream& out, bool json);

/// What `show` and the agent call a user.
std::string userName(const std::string& name);

/// Appends a user, with assignments FIELD=VALUE.
void addUser(Store& store, const std::string& name, const std::vector<std::string>& fields);

/// Changes fields of a user. Prints what has changed.
void setUser(Store& store, std::ostream& out, const std::string& name,
             const std::vector<std::string>& fields);

void renameUser(Store& store, const std::string& name, const std::string& newName);

/// Removes all of the users or, if one is not there, none.
void deleteUsers(Store& store, const std::vector<std::string>& names);

/// Prints the agent's state, one "name: value" line each, but for the list of findings().
void status(Store& store, std::ostream& out);

/// Prints what the agent found in its settings file, one line each.
void findings(Store& store, std::ostream& out);

/// Prints a line at each change of a group, until the agent goes or the process is ended.
void watch(Store& store, std::ostream& out);

}  // namespace client
