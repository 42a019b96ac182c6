#include "agent/load_settings.h"

#include <sstream>
#include <utility>

#include "agent/base/log.h"
#include "agent/load_report.h"
#include "agent/load_timeout.h"
#include "agent/services/markup_report.h"
#include "inspection/settings_completeness.h"

namespace agent {

namespace {

constexpr const char* LEGACY_ELEMENT = "LocalSettings";

/// Why the settings of earlier versions are none; empty if they were imported.
std::string importFailure() {
  const MarkupReport& report = markupReport();
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

}  // namespace

LoadOutcome loadSettings(LPARAMS::Server::Server_t& server, const StateDirectory& directory,
                         const StartingPoint& start, std::optional<size_t> importing) {
  std::ostringstream defaults;
  (void)server.save(defaults, 0);
  LoadReport report(server);
  bool loaded = false;
  {
    const LoadTimeout timeout(start.text.size() + importing.value_or(0));
    loaded = server.load(&report);
  }
  log(Level::Info, "settings loaded",
      {{"state-dir", directory.path()}, {"reports", report.reports()}});
  const auto degraded = [&](std::string reason) {
    return LoadOutcome{std::move(reason), report.reports()};
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
