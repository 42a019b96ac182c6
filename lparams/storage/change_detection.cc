#include "lparams/storage/change_detection.h"

#include <locale>
#include <sstream>
#include <utility>

namespace LPARAMS::Server {

void raw_settings_(ParamGroup& group, std::string& out) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  (void)group.save(text, 0);
  out = std::move(text).str();
}

bool is_not_changed_(ParamGroup& group, const std::string& raw, std::string& current) {
  raw_settings_(group, current);
  return !raw.empty() && raw == current;
}

}  // namespace LPARAMS::Server
