#include "lparams/storage/settings_reader.h"

#include <string>

#include "lparams/params/text_form.h"

namespace LPARAMS::Server {
namespace {

constexpr const char* BYTE_ORDER_MARK = "\xEF\xBB\xBF";

/// Only editors put the mark there, and only before the first key.
std::string firstKey(std::istream& is) {
  std::string key = nextKey(is);
  if (key.starts_with(BYTE_ORDER_MARK)) key.erase(0, 3);
  while (key.empty()) key = nextKey(is);
  return key;
}

}  // namespace

bool readSettings(ParamGroup& root, std::istream& is, LoadLog& log) {
  std::string key = firstKey(is);
  if (key.starts_with('/')) key.erase(0, 1);
  if (key != root.name) {
    log.rootMismatch(key, root.name);
    return false;
  }
  return root.ParamGroup::load(is);
}

}  // namespace LPARAMS::Server
