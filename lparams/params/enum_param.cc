#include "lparams/params/enum_param.h"

#include <algorithm>
#include <string>

#include "lparams/params/load_log.h"
#include "lparams/params/module_objects.h"
#include "lparams/params/text_reader.h"
#include "lparams/params/text_writer.h"

namespace LPARAMS::Server {

bool EnumParam::save(std::ostream& os, int indent) {
  Lock lock(*this);
  const Variant* variant = findVariant(variants, value);
  if (variant == nullptr) {
    value = defaultValue;
    variant = findVariant(variants, value);
  }
  putLine(os, indent, name, "=", variant != nullptr ? variant->name : "");
  return true;
}

bool EnumParam::load(std::istream& is) {
  Lock lock(*this);
  TextReader reader(is);
  const std::string_view text = reader.restOfLine();
  value = defaultValue;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find('|', begin), text.size());
    const std::string_view piece = text.substr(begin, end - begin);
    for (const Variant* row = variants; row->name != nullptr; ++row) {
      if (equalNames(piece, row->name)) {
        value = row->value;
        return true;
      }
    }
    begin = end + 1;
  }
  if (g_loadlog != nullptr) g_loadlog->badValue(name, std::string(text));
  return true;
}

}  // namespace LPARAMS::Server
