#include "lparams/params/enum_param.h"

#include <string>

#include "lparams/params/load_log.h"
#include "lparams/params/name_list.h"
#include "lparams/params/text_reader.h"
#include "lparams/params/text_writer.h"

namespace LPARAMS::Server {

bool EnumParam::save(std::ostream& os, int indent) {
  Lock lock(*this);
  if (const Variant* const variant = findVariant(variants, value)) {
    putLine(os, indent, name, "=", variant->name);
    return true;
  }
  (void)Param::save(os, indent);  // a stream that throws here leaves the value as it was
  value = defaultValue;
  const Variant* const variant = findVariant(variants, value);
  putLine(os, 0, variant != nullptr ? variant->name : "");
  return true;
}

bool EnumParam::load(std::istream& is) {
  Lock lock(*this);
  TextReader reader(is);
  const std::string_view text = reader.restOfLine();
  value = defaultValue;
  NameList names(text, NameList::EmptyName);
  for (std::string_view piece; names.next(piece);) {
    for (const Variant* row = variants; row->name != nullptr; ++row) {
      if (equalNames(piece, row->name)) {
        value = row->value;
        return true;
      }
    }
  }
  if (g_loadlog != nullptr) g_loadlog->badValue(name, std::string(text));
  return true;
}

}  // namespace LPARAMS::Server
