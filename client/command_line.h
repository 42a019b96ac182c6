// The command line of the client.
#pragma once

namespace client {

/// Carries out what the command line says. Throws Failure if that cannot be done.
void runCommandLine(int argc, char** argv);

}  // namespace client
