#include "lparams/params/mask_param.h"

#include <string>

#include "lparams/params/load_log.h"
#include "lparams/params/name_list.h"
#include "lparams/params/text_reader.h"
#include "lparams/params/text_writer.h"

namespace LPARAMS::Server {

bool MaskParam::save(std::ostream& os, int indent) {
  Lock lock(*this);
  int32_t rest = value;
  std::string names;
  bool first = true;
  for (const Variant* row = variants; rest != 0 && row->name != nullptr; ++row) {
    if ((row->value & rest) == 0) continue;
    rest &= ~row->value;
    if (!first) names += NAME_SEPARATOR;
    names += row->name;
    first = false;
  }
  putLine(os, indent, name, "=", names);
  return true;
}

bool MaskParam::load(std::istream& is) {
  Lock lock(*this);
  TextReader reader(is);
  const std::string_view text = reader.restOfLine();
  value = 0;
  NameList names(text, NameList::Nothing);
  for (std::string_view piece; names.next(piece);) {
    for (const Variant* row = variants; row->name != nullptr; ++row) {
      if (equalNames(piece, row->name)) value |= row->value;
    }
  }
  if (value != 0) return true;
  if (g_loadlog != nullptr) g_loadlog->badValue(name, std::string(text));
  value = defaultValue;
  return true;
}

}  // namespace LPARAMS::Server
