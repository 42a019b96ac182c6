// File systems that only a child process sees.
#pragma once

#include <string>

namespace host {

/// Gives the calling process mounts of its own; they go away with it. Throws std::system_error with
/// the reason if the system does not allow that. REQUIRES: the process has one thread; the thread
/// sanitizer adds one, so that its tests have to be run as root.
void enterPrivateMounts();

// REQUIRES of all the following: enterPrivateMounts(). They throw std::system_error.

/// Mounts an empty file system on the directory. `options` are the file system's own.
void mountEmpty(const std::string& directory, const std::string& options = {});

/// Makes `source` appear at `target`; both are files or both are directories.
void mountOver(const std::string& source, const std::string& target);

/// Makes what is mounted there read-only.
void makeReadOnly(const std::string& mount);

/// Takes the topmost mount off again.
void unmount(const std::string& mount);

/// Replaces /etc with an empty directory and creates SYSTEM_DIRECTORY in it.
void replaceSystemDirectory();

}  // namespace host
