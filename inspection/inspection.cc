#include "inspection/inspection.h"

#include <mutex>

#include "inspection/inspector.h"
#include "inspection/settings_completeness.h"
#include "lparams/params/load_log.h"

namespace inspection {
namespace {

using namespace LPARAMS::Server;

/// Makes a log that of all loads in the process.
class ActiveLog {
 public:
  explicit ActiveLog(LoadLog& log) { g_loadlog = &log; }
  ~ActiveLog() { g_loadlog = nullptr; }
  ActiveLog(const ActiveLog&) = delete;
  ActiveLog& operator=(const ActiveLog&) = delete;
};

}  // namespace

Inspection inspect(std::string_view text, Catalogue& settings, Limits limits,
                   std::vector<Taken>* taken) {
  static std::mutex loading;  // there is one log for all loads
  Inspection result{incompleteBecause(text)};
  result.findings.kept = limits.findings;
  // The module reads such a text for ever.
  if (withoutByteOrderMark(text).find_first_not_of(KEY_MARK) == std::string_view::npos) {
    return result;
  }
  const std::lock_guard lock(loading);
  Inspector inspector(text, settings, limits.users, result.findings, taken);
  const ActiveLog active(inspector);
  result.loaded = inspector.load();
  return result;
}

}  // namespace inspection
