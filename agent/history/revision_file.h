// A revision of the history as a file holds it.
#pragma once

#include <optional>
#include <string>

#include "bridge/history.h"

namespace agent {

/// A revision with the settings that were saved.
struct KeptRevision {
  bridge::Revision head;
  std::string text;  ///< of the settings file

  bool operator==(const KeptRevision&) const = default;
};

/// The bytes of the file. Their end is the text, in its own lines, and a checksum of all before it.
std::string encode(const KeptRevision& revision);

/// Throws std::runtime_error, with the reason, if that is no whole revision, or one of settings
/// that no start would take.
KeptRevision decodeKeptRevision(std::string file);

}  // namespace agent
