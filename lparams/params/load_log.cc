#include "lparams/params/load_log.h"

namespace LPARAMS::Server {

constinit LoadLog* g_loadlog = nullptr;

}  // namespace LPARAMS::Server
