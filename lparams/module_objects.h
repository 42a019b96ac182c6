// The module-wide objects, and the rules of locking and ownership that hold across the module.
//
// Lock order. Locks nest in this order and in no other:
//   1. g_ioLock          a bridge command that reads or writes a group, a whole save, a whole load;
//   2. the root's lock   the root's own text, and each use of the snapshot `rawSettings` by itself;
//   3. a group's lock    saving, loading, writing, reading the group;
//   4. an inner group's  an entry of the user list, inside the list's lock;
//   5. a parameter's     the same four operations of one parameter.
// All are recursive: observers and the save hook run inside them and may call back into the root
// on the same thread.
// No call takes a lock that it holds already: each ends also when the locks could not be made
// recursive.
//
// Calls that take no lock: getTypeId, getParam, Param::save and Param::load (they run inside the
// lock of the typed parameter), listAdd, listDel and listClear (their caller keeps other threads
// away from the list), and `observers`, which is filled before the first command. isChanged takes
// the root's lock but not g_ioLock, so it may see one group before a command and another after it.
//
// Observers run on the bridge's thread that executes the write, under g_ioLock and no group's lock.
// The save hook runs on the bridge's thread under no lock at all. The operations of a LoadLog run
// on the loading thread, under g_ioLock and the locks of the group and the parameter that report.
//
// Ownership. g_serverFactory holds the root by value, the root its groups, a group its parameters;
// the lists of a group only point at them. The user list alone owns what it points at. Command
// streams and load logs belong to the caller and are never kept.
#pragma once

#include <string>

#include "platform/lockable.h"

namespace LPARAMS::Server {

class Factory;

// All three are defined in lparams_server.cc: that file fixes the order in which they are built and
// torn down. No other source of the module has anything to initialise at run time.

/// Path of the settings file; empty until default_file_name_() is first called. Protected by
/// g_ioLock.
extern std::string settingsFile;

/// The module-wide I/O lock, first in the lock order.
extern basekit::ObjectLevelLockable g_ioLock;

/// The one listener of the module, and in it the settings root.
extern Factory g_serverFactory;

}  // namespace LPARAMS::Server
