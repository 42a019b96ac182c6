#include "lparams/params/param.h"

#include <istream>
#include <string>

#include "lparams/params/load_log.h"
#include "lparams/params/text_reader.h"
#include "lparams/params/text_writer.h"

namespace LPARAMS::Server {

bool Param::save(std::ostream& os, int indent) {
  putPieces(os, indent, {name, "="});
  return true;
}

bool Param::load(std::istream& is) {
  const bool failed = is.fail();
  if (failed) is.clear();
  TextReader reader(is);
  const std::string_view rest = reader.restOfLine();
  if (g_loadlog == nullptr) return true;
  if (failed) {
    g_loadlog->badValue(name, std::string(rest));
  } else if (!rest.empty()) {
    g_loadlog->extraText(name, std::string(rest));
  }
  return true;
}

}  // namespace LPARAMS::Server
