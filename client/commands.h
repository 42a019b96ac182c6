// The sub-commands of the client. Each throws Failure if it cannot do what it is for.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "client/store.h"

namespace client {

/// Prints a group, or all of them if `groupName` is empty: one line GROUP.NAME=value for every
/// parameter that the bridge carries, in the order of the bridge. Secrets show only if `secrets`.
/// What `set` would not take back as it stands is a comment, a line that begins with "#". Prints
/// nothing unless everything has been read.
void show(Store& store, std::ostream& out, const std::string& groupName, bool secrets);

/// Prints the value of one parameter, byte for byte, and a newline.
void get(Store& store, std::ostream& out, const std::string& fullName);

/// Carries out assignments GROUP.NAME=VALUE; "-" stands for the lines of `in`. All of them are
/// checked before the agent is asked for anything, and all groups are read before one is written.
/// Every group is written as a whole, in one command, in the order in which they are first named.
/// If one fails, the message says which groups have been written.
void set(Store& store, const std::vector<std::string>& assignments, std::istream& in);

/// Appends an entry to the user list, with assignments FIELD=VALUE. Refuses a name that is empty or
/// taken.
void addUser(Store& store, const std::string& name, const std::vector<std::string>& fields);

/// Removes the entry with the name or, if no entry has it, with that index.
void deleteUser(Store& store, const std::string& nameOrIndex);

/// Prints the agent's state, one "name: value" line each, but for the list of findings().
void status(Store& store, std::ostream& out);

/// Prints what the agent found in its settings file, one line each.
void findings(Store& store, std::ostream& out);

/// Prints a line at each change of a group, until the agent goes or the process is ended.
void watch(Store& store, std::ostream& out);

}  // namespace client
