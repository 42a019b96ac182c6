// A parameter's two encodings as plain strings.
#pragma once

#include <sstream>
#include <string>

#include "lparams/params/command_stream.h"
#include "lparams/params/param.h"

namespace testing_support {

/// What the parameter or group saves, `indent` levels deep.
inline std::string savedText(LPARAMS::Server::Param& param, int indent = 0) {
  std::ostringstream os;
  if (!param.save(os, indent)) return "save returned false";
  return std::move(os).str();
}

/// Loads from the text that stands behind the "=" of the parameter's line or the group's head.
/// Returns what the load returned.
inline bool loadText(LPARAMS::Server::Param& param, const std::string& text) {
  std::istringstream is(text);
  return param.load(is);
}

/// What the parameter or group writes to a reply.
inline std::string wireBytes(LPARAMS::Server::Param& param) {
  std::string bytes;
  LPARAMS::Server::CommandStreamOut out{bytes};
  if (!param.write(out)) return "write returned false";
  return bytes;
}

/// How reading from a command ended.
struct ReadResult {
  bool result = false;
  std::string thrown;     ///< the text of the `const char*` that was thrown; empty if none was
  unsigned position = 0;  ///< of the stream afterwards
};

inline ReadResult readBytes(LPARAMS::Server::Param& param, const std::string& bytes) {
  LPARAMS::Server::CommandStreamIn in(bytes);
  ReadResult read;
  try {
    read.result = param.read(in);
  } catch (const char* thrown) {
    read.thrown = thrown;
  }
  read.position = in.pos;
  return read;
}

}  // namespace testing_support
