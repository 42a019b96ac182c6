// Changes as they happen.
#include <iostream>

#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "text/escape.h"

namespace client {
namespace {

constexpr const char* NOTES =
    R"~(One line for each write of a group, with its revision and the process that wrote it, until
interrupted.)~";

struct Given {};

void watch(Context& context, const Given& /*given*/) {
  AgentStore& agent = context.agent();
  agent.subscribe();
  for (;;) {
    const bridge::Event event = agent.nextEvent();
    std::cout << text::escaped(event.group) << " revision " << event.revision << " by uid "
              << event.uid << " pid " << event.pid << std::endl;
  }
}

}  // namespace

void addWatch(CLI::App& app, Context& context) {
  (void)addVerb(app, context, "watch", "Print changes as they happen", NOTES, watch);
}

}  // namespace client
