#include "lparams/storage/settings_reader.h"

#include <string>

#include "lparams/params/block_grammar.h"
#include "lparams/params/text_reader.h"

namespace LPARAMS::Server {
namespace {

std::string firstKey(std::istream& is) {
  TextReader reader(is);
  std::string key(reader.upTo(KEY_MARK));
  if (key.starts_with(BYTE_ORDER_MARK)) key.erase(0, BYTE_ORDER_MARK.size());
  while (key.empty()) key = reader.upTo(KEY_MARK);
  return key;
}

}  // namespace

bool readSettings(ParamGroup& root, std::istream& is, LoadLog& log) {
  std::string key = firstKey(is);
  if (key.starts_with(BLOCK_MARK)) key.erase(0, 1);
  if (key != root.name) {
    log.rootMismatch(key, root.name);
    return false;
  }
  return root.ParamGroup::load(is);
}

}  // namespace LPARAMS::Server
