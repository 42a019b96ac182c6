// A directory of its own for one test, and what lies in it.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace agent_testing {

/// Created empty, with mode 0700; removed with all that is in it.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();

  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  std::string at(const std::string& name) const { return path + "/" + name; }

  /// Makes the file or replaces it by a new one.
  void write(const std::string& name, const std::string& text) const;

  /// "(absent)" if nothing has the name, "(not a file)" if something else than a file has it.
  std::string text(const std::string& name) const;

  /// The text without the line of its checksum.
  std::string unsealedText(const std::string& name) const;

  void remove(const std::string& name) const;

  mode_t mode(const std::string& name) const;
  gid_t group(const std::string& name) const;

  /// Sorted. A time in a name is written as TIME: "localsettings.ini.edited-TIME-2".
  std::vector<std::string> names() const;

  /// The text of the only file whose name begins like that; else what is wrong.
  std::string textOfOnly(const std::string& beginning) const;

  /// Every name with its text, to be compared.
  std::vector<std::string> contents() const;

  const std::string path;
};

/// A whole settings file that differs from the defaults in every group, with this IKE_PORT.
std::string exampleSettings(int port = 500);

}  // namespace agent_testing
