// Strings that take the whole rest of their line.
#pragma once

#include "lparams/params/simple_param.h"

namespace LPARAMS::Server {

/// A string whose blanks, at either end too, and whose emptiness survive the settings file.
/// Nothing is quoted: a newline that came over the bridge is saved as it is, and the loaded value
/// ends before it.
class StStParam : public SimpleParam<std::string, TYPE_STRING> {
 public:
  using SimpleParam::SimpleParam;
  bool load(std::istream& is) override;
};

/// The same for a secret. The store keeps and sends it in clear; the type identifier lets clients
/// treat it with care.
class QcdSParam : public SimpleParam<std::string, TYPE_SECRET> {
 public:
  using SimpleParam::SimpleParam;
  bool load(std::istream& is) override;
};

}  // namespace LPARAMS::Server
