#include "lparams/storage/legacy_import.h"

#include <cstdio>
#include <fstream>
#include <string>

#include "lparams/interface/file_names.h"
#include "lparams/storage/legacy_document.h"
#include "platform/markup_document.h"
#include "platform/paths_service.h"

namespace LPARAMS::Server {
namespace {

void importDocument(const std::string& path, POLICY_t& policy, IKE_t& ike) {
  MLDoc document;
  (void)document.load(path.c_str());  // an unreadable document has no children
  importLegacyDocument(document, policy, ike);
  document.release();
}

bool canOpen(const std::string& path) { return std::ifstream(path).is_open(); }

}  // namespace

void importLegacySettings(POLICY_t& policy, IKE_t& ike) {
  const std::string candidates[] = {std::string(systemVarDir()) + LEGACY_FILE_NAME,
                                    LEGACY_SYSTEM_FILE};
  for (const std::string& candidate : candidates) {
    if (!canOpen(candidate)) continue;
    try {
      importDocument(candidate, policy, ike);
    } catch (const TTT&) {
      // Kept oddity, for whoever looks for the file: one that is not well formed is deleted too.
      // What was assigned before the error stays.
    }
    for (const std::string& imported : candidates) (void)std::remove(imported.c_str());
    return;
  }
}

}  // namespace LPARAMS::Server
