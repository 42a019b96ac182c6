// The command line of the client.
#pragma once

#include "programs/exit_status.h"

namespace client {

/// Carries out what the command line says and returns the exit status. Throws Failure if that
/// cannot be done.
programs::ExitStatus runCommandLine(int argc, char** argv);

}  // namespace client
