// Has changes stay.
#include <iostream>

#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"

namespace client {
namespace {

constexpr const char* CONFIRM_NOTES =
    R"~(Changes made by "apply --confirm SECONDS" go back when the time is over, in memory and in the
file, also if the agent ends meanwhile. This lets them stay. The state tells until when there
is time: "pendingConfirmation" in "lparamsctl status".

Example:
  lparamsctl apply --save --confirm 60 gateway.json && lparamsctl confirm)~";

struct ConfirmGiven {
  bool json = false;
};

void confirm(Context& context, const ConfirmGiven& given) {
  (void)context.agent().call(bridge::AgentCommand{"confirm", {}}, "confirming");
  std::cout << (given.json ? printedJson({{"confirmed", true}}) : "confirmed\n");
}

}  // namespace

void addConfirm(CLI::App& app, Context& context) {
  const auto [command, given] = addVerb(
      app, context, "confirm", "Let changes stay that would go back", CONFIRM_NOTES, confirm);
  addJson(command, given->json);
}

}  // namespace client
