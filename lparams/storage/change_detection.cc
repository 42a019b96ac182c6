#include "lparams/storage/change_detection.h"

#include <string>

#include "lparams/params/text_stream.h"

namespace LPARAMS::Server {

std::string currentText(ParamGroup& group, size_t size) {
  TextStream os(size);
  (void)group.save(os, 0);
  return os.take();
}

void raw_settings_(ParamGroup& group, std::string& out) { out = currentText(group, out.size()); }

bool is_not_changed_(ParamGroup& group, const std::string& raw, std::string& current) {
  current = currentText(group, raw.size());  // the text seldom changes its size
  return !raw.empty() && raw == current;
}

}  // namespace LPARAMS::Server
