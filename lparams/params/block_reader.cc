#include "lparams/params/block_reader.h"

#include <vector>

#include "lparams/params/load_log.h"

namespace LPARAMS::Server {

void reportUnknown(const std::string& key, const std::string& group) {
  if (g_loadlog != nullptr) g_loadlog->unknownParam(key, group);
}

void BlockReader::skipBlock(const std::string& name) {
  std::vector<std::string> open{name};  // no recursion: the stack has an end
  Key key;
  while (!open.empty() && next(key)) {
    if (key.name == END_KEY) {
      finishEnd();
      open.pop_back();
      continue;
    }
    const std::string unknown(key.name);
    if (!key.namesBlock) skipValue();
    reportUnknown(unknown, open.back());
    if (key.namesBlock) open.push_back(unknown);
  }
}

}  // namespace LPARAMS::Server
