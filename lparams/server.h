// The settings root.
#pragma once

#include <string>

#include "lparams/catalogue/catalogue.h"
#include "lparams/params/load_log.h"
#include "lparams/params/module_export.h"

namespace LPARAMS {
namespace Server {

/// Every group of settings, and the outermost block of the settings file. One exists, inside the
/// module's factory. An agent that has loaded the module reaches it through LPARAMS::server; save,
/// load and isChanged are virtual, so that it needs no further symbol.
///
/// The order of the operations and of the fields is part of the interface.
class Server_t : public Catalogue {
 public:
  using ParamGroup::load;
  using ParamGroup::save;

  /// Writes the settings file unless its text would be that of the last load or save. Returns true
  /// when the file agrees with the settings afterwards. Appends to `error`, unless it is null,
  /// "file: " and the path when the file was written, and the reason when it could not be.
  /// Thread-safe. What a crash can do to the file: lparams/storage/settings_writer.h.
  LPARAMS_EXPORT virtual bool save(std::string* error);

  /// Fills the settings from their file or, if that cannot be opened, from the settings of earlier
  /// versions. Meant to run once, on an empty user list. Returns false if the file was not read to
  /// its end; what was read stays. REQUIRES: `log` is not null; the file is neither empty nor a
  /// directory, else the call does not return. Thread-safe.
  LPARAMS_EXPORT virtual bool load(LoadLog* log);

  /// True when there are changes that are not yet in the file. Thread-safe; does not wait for a
  /// running command, so it may see one group before and another after it.
  LPARAMS_EXPORT virtual bool isChanged();

  /// Called instead of `save` by the bridge's save command, with the name of the module's section;
  /// returns a truth value. Null unless the agent sets it, before the first command.
  int (*saveHook)(const char*) = nullptr;

  /// The text of the file at the last load or save; empty before, and after a rename that failed.
  /// Written under g_ioLock and the root's own lock; either is enough to read it.
  std::string rawSettings;

 private:
  void setSnapshot(std::string text);
};

/// The path of the settings file, computed at the first call. REQUIRES: g_ioLock is held.
const char* default_file_name_();

}  // namespace Server

/// The settings root. Constant from before the module's own start-up.
extern LPARAMS_EXPORT Server::Server_t* server;

}  // namespace LPARAMS
