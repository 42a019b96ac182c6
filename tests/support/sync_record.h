// The fsync(2) of this process, for a test that wants to know what was synced.
#pragma once

#include <string>
#include <vector>

namespace testing_support {

/// Starts the record anew. REQUIRES: no other thread syncs meanwhile.
void recordSyncs();

/// The names of the files and directories that were synced since then, in order. Ends the record.
std::vector<std::string> syncs();

/// Adds a line of the test's own to the record.
void note(const std::string& what);

}  // namespace testing_support
