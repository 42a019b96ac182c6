#include "lparams/params/mask_param.h"

#include <algorithm>
#include <string>

#include "lparams/params/load_log.h"
#include "lparams/params/module_objects.h"
#include "lparams/params/text_reader.h"
#include "lparams/params/text_writer.h"

namespace LPARAMS::Server {

bool MaskParam::save(std::ostream& os, int indent) {
  Lock lock(*this);
  int32_t rest = value;
  std::string names;
  for (const Variant* row = variants; rest != 0 && row->name != nullptr; ++row) {
    if ((row->value & rest) == 0) continue;
    rest &= ~row->value;
    if (!names.empty()) names += '|';
    names += row->name;
  }
  putLine(os, indent, name, "=", names);
  return true;
}

bool MaskParam::load(std::istream& is) {
  Lock lock(*this);
  TextReader reader(is);
  const std::string_view text = reader.restOfLine();
  value = 0;
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find('|', begin), text.size());
    const std::string_view piece = text.substr(begin, end - begin);
    for (const Variant* row = variants; row->name != nullptr; ++row) {
      if (equalNames(piece, row->name)) value |= row->value;
    }
    begin = end + 1;
  }
  if (value != 0) return true;
  if (g_loadlog != nullptr) g_loadlog->badValue(name, std::string(text));
  value = defaultValue;
  return true;
}

}  // namespace LPARAMS::Server
