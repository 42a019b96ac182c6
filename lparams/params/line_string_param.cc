#include "lparams/params/line_string_param.h"

#include "lparams/params/text_reader.h"

namespace LPARAMS::Server {

bool StStParam::load(std::istream& is) {
  Lock lock(*this);
  value = TextReader(is).restOfLine();
  return true;
}

bool QcdSParam::load(std::istream& is) {
  Lock lock(*this);
  value = TextReader(is).restOfLine();
  return true;
}

}  // namespace LPARAMS::Server
