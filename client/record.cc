#include "client/record.h"

#include "client/failure.h"

namespace client {
namespace {

using namespace LPARAMS::Server;

[[noreturn]] void refuse(const ParamGroup& group, const std::string& what) {
  throw Failure(ExitCode::NoAgent,
                std::string("the agent's record of ") + group.name + " is " + what);
}

}  // namespace

std::string encodeName(const ParamGroup& group) {
  std::string input;
  CommandStreamOut out{input};
  put(out, std::string(group.name));
  return input;
}

std::string encodeRecord(ParamGroup& group) {
  std::string input = encodeName(group);
  CommandStreamOut out{input};
  (void)group.write(out);
  return input;
}

void decodeRecord(ParamGroup& group, const std::string& record) {
  CommandStreamIn in(record);
  try {
    (void)group.read(in);
  } catch (const char*) {
    refuse(group, "too short");
  }
  if (in.pos != in.size)
    refuse(group, "too long; bytes left over: " + std::to_string(in.size - in.pos));
}

}  // namespace client
