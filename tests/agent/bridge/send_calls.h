// How the agent's sends to its clients go: the executable exports a send() of its own in front of
// the C library's. Each counts that does not wait for the client; those of the tests do.
#pragma once

namespace agent_testing {

/// From here on every other one is interrupted, and the socket takes little of the rest; or not.
void disturbSends(bool disturbed);

/// The next one fails with the error, once.
void failNextSend(int error);

}  // namespace agent_testing
