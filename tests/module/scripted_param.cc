#include "tests/module/scripted_param.h"

#include "lparams/params/module_objects.h"

// The parameter model that is linked into the tests has a load log of its own, which nothing sets.
constinit LPARAMS::Server::LoadLog* LPARAMS::Server::g_loadlog = nullptr;
