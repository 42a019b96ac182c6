#include "client/assignment.h"

#include "client/failure.h"
#include "text/escape.h"

namespace client {

using namespace LPARAMS::Server;

Assignment parseAssignment(const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos) {
    // The text is not shown: it may be a misspelt secret.
    throw Failure(ExitCode::Usage, "an assignment has no \"=\"; write NAME=VALUE");
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

void assign(Param& param, const std::string& value, const std::string& fullName) {
  if (setValue(param, value)) return;
  const std::string shown = isSecret(param) ? "the value" : text::inQuotes(value);
  throw Failure(ExitCode::Usage, fullName + ": " + shown + " is not " + legalValues(param));
}

}  // namespace client
