#include "lparams/storage/change_detection.h"

#include <string>
#include <utility>

#include "lparams/params/text_stream.h"

namespace LPARAMS::Server {

void raw_settings_(ParamGroup& group, std::string& out) {
  TextStream os(std::move(out));
  (void)group.save(os, 0);
  out = os.take();
}

bool is_not_changed_(ParamGroup& group, const std::string& raw, std::string& current) {
  current.resize(raw.size());  // the text seldom changes its size
  raw_settings_(group, current);
  return !raw.empty() && raw == current;
}

}  // namespace LPARAMS::Server
