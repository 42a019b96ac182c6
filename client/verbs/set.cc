// Changes of parameters.
#include "client/assignment.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "text/escape.h"

namespace client {
namespace {

constexpr const char* SET_NOTES =
    R"~(Everything is checked before anything is written; then all is written, over all groups, or
nothing. What is so already is not written.

  numbers       decimal, within their limits
  flags         0, 1, false or true
  enumerations  one of their names; a wrong one makes the error list them all
  strings       one line without control characters

NAME=@FILE takes the value from a file, NAME=@- from the standard input, both without the line
end behind it; NAME=@@TEXT is the text "@TEXT". --ask asks for a value on the terminal, without
an echo. All of them keep a secret out of the list of processes. "-" reads assignments from the
standard input, one a line, with comments and empty lines left out: it takes back what "show"
printed. A secret given as "(hidden)" stays as it is.

Examples:
  lparamsctl set IKE.IKE_PORT=500 IKE.PERSISTENT_SA=true
  lparamsctl set --save 'USERS[anna].PMP_TIMEOUT=20'
  lparamsctl set --ask IKE.QCD_SECRET
  lparamsctl set POLICY.PSK_NAME=@/run/psk-name
  lparamsctl set - < settings.txt)~";

struct SetGiven {
  std::vector<std::string> assignments;
  std::vector<std::string> asked;
  bool bytes = false;
  SaveOption save;
  bool json = false;
};

void set(Context& context, const SetGiven& given) {
  if (given.assignments.empty() && given.asked.empty()) {
    throw CLI::RequiredError("GROUP.NAME=VALUE");
  }
  Assignments assignments;
  for (const std::string& text : given.assignments) {
    if (text == "-") {
      assignments.addLines();
    } else {
      assignments.add(text);
    }
  }
  for (const std::string& name : given.asked) assignments.ask(name);
  carryOut(context.store(), assignments, given.bytes, given.save, given.json);
}

}  // namespace

void addSet(CLI::App& app, Context& context) {
  const auto [command, given] = addVerb(app, context, "set", "Change parameters", SET_NOTES, set);
  command.add_option("GROUP.NAME=VALUE", given->assignments, "The parameters and their values");
  command.add_option("--ask", given->asked, "Ask for the value of this one")
      ->type_name("GROUP.NAME")
      ->allow_extra_args(false);
  addBytes(command, given->bytes);
  addSave(command, given->save);
  addJson(command, given->json);
}

}  // namespace client
