// The calls of a save, as the call log writes them down.
#pragma once

#include <string>

namespace host {

inline const std::string CREATION =
    "open localsettings.ini.bak O_RDONLY|O_CREAT|O_EXCL|O_APPEND 0600";
inline const std::string ATTEMPT = "fopen localsettings.ini.bak w";
inline const std::string REMOVAL = "remove localsettings.ini";
inline const std::string RENAMING = "rename localsettings.ini.bak localsettings.ini";

}  // namespace host
