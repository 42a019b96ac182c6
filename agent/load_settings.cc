#include "agent/load_settings.h"

#include <exception>
#include <sstream>
#include <utility>

#include "agent/base/log.h"
#include "agent/load_report.h"
#include "agent/load_timeout.h"
#include "agent/state/settings_review.h"
#include "inspection/settings_completeness.h"
#include "markup/markup_report.h"

namespace agent {

namespace {

constexpr const char* LEGACY_ELEMENT = "LocalSettings";

/// Why the settings of earlier versions are none; empty if they were imported.
std::string importFailure() {
  const markup::MarkupReport& report = markup::markupReport();
  std::string reason;
  if (report.documentsRead == 0) {
    reason = "the file was not opened";
  } else if (!report.failure.empty()) {
    reason = report.failure;
  } else if (report.topElement != LEGACY_ELEMENT) {
    reason =
        "its first element is " + quoted(report.topElement) + ", not \"" + LEGACY_ELEMENT + "\"";
  }
  if (reason.empty()) return {};
  return "the settings of earlier versions could not be imported (" + reason + "); they are kept";
}

/// Looks at the text before the module loads its file. Settings are served without such a look too.
inspection::Findings review(const StartingPoint& start, size_t maxUsers) {
  if (start.source == StartingPoint::FirstStart) return {};
  try {
    return reviewText(start.text, maxUsers);
  } catch (const std::exception& error) {
    log(Level::Warning, "the settings file could not be looked at", {{"reason", error.what()}});
    return {};
  }
}

}  // namespace

LoadOutcome loadSettings(LPARAMS::Server::Server_t& server, const StateDirectory& directory,
                         const StartingPoint& start, std::optional<size_t> importing,
                         size_t maxUsers) {
  std::ostringstream defaults;
  (void)server.save(defaults, 0);
  inspection::Findings findings = review(start, maxUsers);
  LoadReport report;
  bool loaded = false;
  {
    const LoadTimeout timeout(start.text.size() + importing.value_or(0));
    loaded = server.load(&report);
  }
  logFindings(Level::Warning, findings);
  if (report.reports() != static_cast<int>(findings.reported)) {
    log(Level::Warning, "the module reports of its file what is not found in the text of it",
        {{"reports", report.reports()}, {"found", static_cast<long long>(findings.reported)}});
  }
  log(Level::Info, "settings loaded",
      {{"state-dir", directory.path()},
       {"reports", report.reports()},
       {"findings", static_cast<long long>(findings.count)}});
  const auto degraded = [&](std::string reason) {
    return LoadOutcome{std::move(reason), report.reports(), std::move(findings)};
  };
  if (!loaded) return degraded("the settings file was not read to its end");
  if (report.groupsMissing()) return degraded("the settings file lacks groups");

  // The module takes what it cannot open for a file that is not there, and reports nothing.
  const bool onlyDefaults = report.reports() == 0 && server.rawSettings == defaults.str();
  if (onlyDefaults && start.source != StartingPoint::FirstStart &&
      inspection::withoutByteOrderMark(start.text) != server.rawSettings) {
    return degraded("nothing was read from the settings file");
  }
  if (importing) return degraded(importFailure());
  return degraded({});
}

}  // namespace agent
