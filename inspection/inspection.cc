#include "inspection/inspection.h"

#include "inspection/inspector.h"
#include "inspection/loading.h"
#include "inspection/settings_completeness.h"

namespace inspection {

using namespace LPARAMS::Server;

Inspection inspect(std::string_view text, Catalogue& settings, Limits limits,
                   std::vector<Taken>* taken) {
  Inspection result{incompleteBecause(text)};
  result.findings.kept = limits.findings;
  // The module reads such a text for ever.
  if (withoutByteOrderMark(text).find_first_not_of(KEY_MARK) == std::string_view::npos) {
    return result;
  }
  Inspector inspector(text, settings, limits.users, result.findings, taken);
  const Loading loading(&inspector);
  result.loaded = inspector.load();
  return result;
}

}  // namespace inspection
