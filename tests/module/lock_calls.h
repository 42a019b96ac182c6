// The locks that the module makes: this process exports the calls that make, take and destroy
// mutexes in front of the C library's, so that they can be counted and can fail.
#pragma once

#include <vector>

#include "platform/lockable.h"

namespace host {

/// Which call on a mutex attribute fails, with ENOMEM.
enum class AttributeFailure { None, Init, SetType };

/// Starts the record anew: from here on every lock that is made and destroyed is written down.
/// REQUIRES: no other thread makes or destroys mutexes meanwhile.
void recordLocks(AttributeFailure failure = AttributeFailure::None);

using Reaction = void (*)();

/// From here on this is called whenever a lock has been made. Null takes that back.
void whenALockIsMade(Reaction reaction);

/// The locks that were made, and those of them that were destroyed again, each in order. The first
/// one that the module makes is its own, g_ioLock.
std::vector<basekit::ObjectLevelLockable*> locksMade();
std::vector<basekit::ObjectLevelLockable*> locksDestroyed();

/// Starts the record of the locks that are taken anew. REQUIRES: no other thread takes any until
/// they are asked for.
void recordTakings();

/// The locks that were taken since then, in order. Ends the record.
std::vector<basekit::ObjectLevelLockable*> locksTaken();

/// Mutex attributes that were created and not destroyed again.
int attributesLeft();

}  // namespace host
