#include "lparams/server.h"

#include <exception>
#include <fstream>
#include <locale>
#include <memory>
#include <utility>

#include "lparams/interface/file_names.h"
#include "lparams/module_objects.h"
#include "lparams/storage/change_detection.h"
#include "lparams/storage/legacy_import.h"
#include "lparams/storage/settings_reader.h"
#include "lparams/storage/settings_writer.h"
#include "platform/paths_service.h"

namespace LPARAMS::Server {
namespace {

constexpr size_t READ_BUFFER_SIZE = 65536;  // bytes; the file of a hundred users fits
constexpr const char* WRITTEN = "file: ";

/// For the report of a load that failed, perhaps before it asked for the path. Empty only if the
/// paths service fails even now.
const std::string& pathForReport() {
  try {
    (void)default_file_name_();
  } catch (const std::exception&) {
    // The report says what it can.
  }
  return settingsFile;
}

}  // namespace

const char* default_file_name_() {
  if (settingsFile.empty()) settingsFile = std::string(systemVarDir()) + SETTINGS_FILE_NAME;
  return settingsFile.c_str();
}

bool Server_t::save(std::string* error) {
  Lock ioLock(g_ioLock);
  std::string current;
  if (is_not_changed_(*this, rawSettings, current)) return true;

  const std::string path = default_file_name_();
  switch (writeSettingsFile(*this, path, error)) {
    case WriteOutcome::WriteFailed:
      return false;
    case WriteOutcome::RenameFailed:
      setSnapshot({});  // so that the next save tries again
      return false;
    case WriteOutcome::Written:
      break;
  }
  if (error != nullptr) error->append(WRITTEN).append(path);
  if (current.empty()) raw_settings_(*this, current);
  setSnapshot(std::move(current));
  return true;
}

bool Server_t::load(LoadLog* log) {
  Lock ioLock(g_ioLock);
  g_loadlog = log;  // stays set if anything but a std::exception gets out of here
  bool loaded = false;
  try {
    const auto buffer = std::make_unique_for_overwrite<char[]>(READ_BUFFER_SIZE);
    std::ifstream file;
    file.rdbuf()->pubsetbuf(buffer.get(), READ_BUFFER_SIZE);
    file.imbue(std::locale::classic());
    file.open(default_file_name_());
    if (file.is_open()) {
      loaded = readSettings(*this, file, *log);
    } else {
      importLegacySettings(*POLICY, *IKE);
      loaded = true;
    }
  } catch (const std::exception&) {
    loaded = false;
  }
  if (!loaded) log->fileFailed(pathForReport());
  setSnapshot(currentText(*this, rawSettings.size()));
  g_loadlog = nullptr;
  return loaded;
}

bool Server_t::isChanged() {
  size_t size = 0;
  {
    Lock rootLock(*this);
    size = rawSettings.size();
  }
  if (size == 0) return true;
  const std::string current = currentText(*this, size);  // takes the root's lock itself
  Lock rootLock(*this);
  return current != rawSettings;
}

void Server_t::setSnapshot(std::string text) {
  Lock rootLock(*this);
  rawSettings.swap(text);
}

}  // namespace LPARAMS::Server
