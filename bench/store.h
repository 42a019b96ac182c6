// The operations of the store, and the limits that no store could go below.
#pragma once

#include <memory>
#include <string>

#include "bench/module.h"
#include "bench/subject.h"

namespace bench {

/// Where the copies of the module and their files are.
struct Place {
  std::string module;     ///< path of the module
  std::string directory;  ///< on a memory file system
};

/// A copy of the module for one subject, loaded, with so many users, in agreement with its file.
std::shared_ptr<Module> makeStore(const Place& place, const std::string& name, unsigned users);

/// The text of the settings file.
std::string fileText(const Module& store);

void addStoreSubjects(Subjects& subjects, const Place& place, unsigned users);
void addLimitSubjects(Subjects& subjects, const Place& place, unsigned users);
void addPeerSubjects(Subjects& subjects, const Place& place, unsigned users);

/// Resident memory per user. REQUIRES: nothing else has used the heap yet and no other thread runs.
Facts memoryFacts(const Place& place);

}  // namespace bench
