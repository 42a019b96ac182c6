// The levels of access at which the module has a session authorised.
#pragma once

namespace LPARAMS::Server {

inline constexpr long WRITE_ACCESS = 0;
inline constexpr long SAVE_ACCESS = 2;

}  // namespace LPARAMS::Server
