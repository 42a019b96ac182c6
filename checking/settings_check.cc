#include <utility>

#include "checking/forms.h"
#include "editing/record_check.h"
#include "inspection/inspection.h"
#include "inspection/line_counter.h"
#include "inspection/settings_completeness.h"

namespace checking {

using editing::RecordCheck;
using inspection::Severity;

Checked checkSettingsFile(std::string_view text, size_t kept) {
  Checked checked(Checked::SettingsFile, kept);
  checked.settings = std::make_unique<LPARAMS::Server::Catalogue>();
  const auto found = inspection::inspect(text, *checked.settings, {.findings = kept});
  checked.usable = found.loaded;
  for (const inspection::Finding& finding : found.findings.first) {
    checked.add(inspection::remarkOf(finding));
  }
  checked.leftOut += found.findings.count - found.findings.first.size();
  if (const auto [reason, offset] = inspection::incompleteness(text); !reason.empty()) {
    checked.add({.place = inspection::LineCounter(text).placeOf(offset),
                 .message = "no start would take the file: " + reason});
  }
  // Less than a start takes, so that what is written can be read.
  if (text.size() > RecordCheck::MAX_SETTINGS_TEXT) {
    checked.add({.severity = Severity::Warning,
                 .message = "the file has " + std::to_string(text.size()) +
                            " bytes; a write may make it at most " +
                            std::to_string(RecordCheck::MAX_SETTINGS_TEXT),
                 .loses = false});
  }
  return checked;
}

}  // namespace checking
