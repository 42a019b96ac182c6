#include "lparams/catalogue/catalogue.h"

namespace LPARAMS::Server {

Catalogue::Catalogue() : ParamGroup("ROOT") {
  for (ParamGroup* group : groups()) add(*group, group == USERS ? FileAndWire : FileOnly);
}

}  // namespace LPARAMS::Server
