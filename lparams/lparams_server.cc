// The module: its objects, in the order in which they are built; teardown runs in reverse. The
// stream library comes first, through <iostream>.
#include <iostream>
#include <string>

#include "lparams/factory.h"
#include "lparams/module_objects.h"

namespace LPARAMS {
namespace Server {

std::string settingsFile;
basekit::ObjectLevelLockable g_ioLock;
Factory g_serverFactory;

}  // namespace Server

constinit Server::Server_t* server = &Server::g_serverFactory.server;

}  // namespace LPARAMS
