// The commands of the module on the bridge.
#pragma once

namespace LPARAMS::Server {

// Clients send these numbers: do not change one.
inline constexpr int WRITE_GROUP = 0;
inline constexpr int READ_GROUP = 1;
inline constexpr int SAVE = 2;

}  // namespace LPARAMS::Server
