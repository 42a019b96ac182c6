// What happens to an agent, as it happens.
#include <unistd.h>

#include <iostream>
#include <optional>

#include "client/failure.h"
#include "client/notice_report.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"

namespace client {
namespace {

constexpr const char* WATCH_NOTES =
    R"~(Prints, until interrupted, one line for each parameter that somebody changes: when (UTC), its
name, the value before and the new one, and who it was: the program, its user and its process.
Lines without a name tell of saves, of requests to write that were refused, of a degradation,
and of the agent's end. Secrets are hidden. With a glob, as "list" has it, only changes of what
has such a name are printed.

With --json each line is an object: "time", "what" (changed, added, removed, reordered, more,
written, broken-off, saved, nothing-to-save, not-saved, refused, degraded, not-degraded, end)
and, where they apply, "name", "before", "after", "secret", "changes", "revision", "reason",
"text", "program", "uid", "pid".

Examples:
  lparamsctl watch
  lparamsctl watch 'USERS[bob]'
  lparamsctl watch --json >> changes.log)~";

struct WatchGiven {
  std::string glob;  // all if empty
  bool json = false;
};

void watch(Context& context, const WatchGiven& given) {
  AgentStore& agent = context.agent();
  std::optional<CatalogueView> catalogue;
  if (given.json) catalogue.emplace(agent.schema());
  agent.watch();
  while (agent.waitForNotice(STDOUT_FILENO)) {
    const bridge::Notice notice = agent.nextNotice();
    std::cout << (given.json ? jsonLinesOf(notice, given.glob, *catalogue)
                             : linesOf(notice, given.glob));
    if (!std::cout.flush()) break;
    if (notice.what == bridge::Notice::AgentEnds) {
      throw Failure(programs::EXIT_UNAVAILABLE, "the agent has ended");
    }
  }
  throw Failure(programs::EXIT_IO, "cannot write the output");
}

}  // namespace

void addWatch(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "watch", "Print changes as they happen", WATCH_NOTES, watch);
  command.add_option("GLOB", given->glob, "Names, with * and ?; all if it is left out");
  addJson(command, given->json);
}

}  // namespace client
