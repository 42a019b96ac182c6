// The standard error stream, on which nobody has to wait.
#pragma once

#include <string_view>

namespace agent {

/// Writes the line if that needs no waiting, whoever reads it and however slowly. Returns false if
/// it does not: then nothing was written, or only the beginning of a line of more than 4096 bytes.
/// Not thread-safe.
bool writeStandardError(std::string_view line);

}  // namespace agent
