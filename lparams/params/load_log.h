// The report interface of a load.
#pragma once

#include <string>

namespace LPARAMS::Server {

/// Receives what a load of the settings file could not take. Supplied by the caller of the load;
/// keeps nothing that it is given. Called on the loading thread, with locks held: an implementation
/// must not wait for another thread that uses the settings. The order of the operations is part of
/// the interface.
class LoadLog {
 public:
  /// The file names a parameter or block `key` that the group does not have; its value is dropped.
  virtual void unknownParam(const std::string& key, const std::string& group) = 0;

  /// The member `key` of the group could not be loaded; the group's load ends here.
  virtual void paramFailed(const std::string& key, const std::string& group) = 0;

  /// The group's block ended with `missing` of its `total` members not loaded; they keep their
  /// values.
  virtual void paramsMissing(int missing, int total, const std::string& group) = 0;

  /// The first key of the file is `key`, not the root's name; nothing was loaded.
  virtual void rootMismatch(const std::string& key, const std::string& rootName) = 0;

  /// The load of the file as a whole did not succeed.
  virtual void fileFailed(const std::string& fileName) = 0;

  /// The parameter's value could not be read; `text` is what remained of the line. Numbers and
  /// words keep their previous value, enumerations and masks take their default.
  virtual void badValue(const std::string& param, const std::string& text) = 0;

  /// The parameter's value was read, but `text` followed it on the line and is dropped.
  virtual void extraText(const std::string& param, const std::string& text) = 0;

 protected:
  // Not virtual: a destructor in the table would move every operation of the interface.
  ~LoadLog() = default;
};

/// Where a running load reports; null while none runs. In the module it is protected by g_ioLock.
extern LoadLog* g_loadlog;

}  // namespace LPARAMS::Server
