// A markup document, the settings of an earlier version: what the module's import and the check
// make of it.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "checking/forms.h"
#include "lparams/storage/legacy_document.h"
#include "lparams/values/values.h"
#include "markup/markup_report.h"
#include "tests/prove/fuzz/settings_text.h"
#include "tests/prove/fuzz/target.h"

namespace fuzz {
namespace {

using namespace LPARAMS::Server;

/// The file that the import reads. One program writes it.
const std::string& path() {
  static const std::string path =
      std::filesystem::temp_directory_path() / ("document-" + std::to_string(::getpid()));
  static const int removed = std::atexit([] { (void)std::remove(path.c_str()); });
  (void)removed;
  return path;
}

/// As the module does it. Returns whether the document could be parsed.
bool import(const std::string& text, Catalogue& settings) {
  std::ofstream(path(), std::ios::binary | std::ios::trunc) << text;
  MLDoc document;
  try {
    require(document.load(path().c_str()), "the document is not read");
  } catch (const TTT&) {
    return false;
  }
  importLegacyDocument(document, *settings.POLICY, *settings.IKE);
  return true;
}

bool isOneLine(const std::string& value) { return value.find('\n') == std::string::npos; }

}  // namespace

void tryOnce(std::string_view input) {
  const std::string text(input);
  Catalogue settings;
  const bool parsed = import(text, settings);
  const checking::Checked checked = checking::checkLegacy(text, checking::Checked::KEPT);
  const auto& report = markup::markupReport();
  const bool usable = parsed && report.topElement == LEGACY_SETTINGS;
  require(checked.usable == usable, "the check and the import differ in whether it is usable");
  if (!usable) {
    require(!checked.remarks.empty(), "an import that takes nothing is not remarked on");
    return;
  }
  std::string imported = textOf(settings);  // names that the import does not have become defaults
#ifdef PLANTED
  if (imported.find("NATT_POLICY=AUTO_FORCE") != imported.npos) (void)text.data()[text.size() + 8];
  if (settings.IKE->NATT_POLICY.value == NATT_POLICY_AUTO_FORCE) imported += '!';
#endif
  require(textOf(*checked.settings) == imported, "the check has other values than the import");
  const POLICY_t& policy = *settings.POLICY;
  const bool isWritable = isOneLine(policy.LOCAL_CERT_SUBJECT.value) &&
                          isOneLine(policy.PMP_SERVERS.value) &&
                          isOneLine(policy.SYSTEM_LSP_FROM_FILE.value);
  if (isWritable) {
    Catalogue restarted;
    requireToSurvive(settings, restarted);
  } else {
    require(std::ranges::any_of(checked.remarks, &inspection::Remark::loses),
            "a line end in a value is lost, and the check does not say so");
  }
}

std::vector<std::string> seeds() {
  const auto document = [](std::string_view module, const std::string& params) {
    return "<?xml version=\"1.0\"?>\n<LocalSettings><Module Name=\"" + std::string(module) + "\">" +
           params + "</Module></LocalSettings>";
  };
  const auto param = [](std::string_view name, const std::string& value) {
    return "<Param Name=\"" + std::string(name) + "\">" + value + "</Param>";
  };
  std::vector<std::string> documents;
  for (const char* number : {"0", "1", "2", "3", "4", "101", "102", "103", "-1", "x"}) {
    documents.push_back(document(LEGACY_IKE_MODULE, param(LEGACY_NATT_POLICY, number)));
    documents.push_back(document(LEGACY_USER_MODULE, param(LEGACY_LOG_LEVEL, number)));
    documents.push_back(document(LEGACY_USER_MODULE,
                                 param(LEGACY_SOURCE_TYPE, number) + param(LEGACY_SOURCE, "a, b")));
  }
  for (const char* value : {"CN=a", "<![CDATA[CN=<a>]]>", "a&amp;b&#10;c", "<!-- c -->x<b/>y"}) {
    documents.push_back(document(LEGACY_USER_MODULE, param(LEGACY_CERT_SUBJECT, value)));
  }
  return documents;
}

}  // namespace fuzz
