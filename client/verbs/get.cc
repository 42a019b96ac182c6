// Values, one a line.
#include <iostream>

#include "client/failure.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "text/escape.h"

namespace client {

namespace {

constexpr const char* GET_NOTES =
    R"~(Each value is printed in a line of its own as it is, a secret too.

Examples:
  lparamsctl get LOG.LOG_LEVEL
  lparamsctl get IKE.IKE_PORT IKE.NATT_PORT 'USERS[anna].PMP_TIMEOUT')~";

struct GetGiven {
  std::vector<std::string> names;
  bool json = false;
};

void get(Context& context, const GetGiven& given) {
  Store& store = context.store();
  const bridge::NamedValues found = store.get(given.names);
  if (given.json) {
    std::cout << printedJson(documentOf(found, CatalogueView(store.schema())));
    return;
  }
  if (found.values.size() != given.names.size()) {
    throw Failure(programs::EXIT_USAGE,
                  "\"get\" prints single parameters; \"show\" prints groups and users");
  }
  std::string lines;
  for (const bridge::NamedValue& value : found.values) {
    if (!value.running) {
      throw Failure(programs::EXIT_NOT_AUTHORISED,
                    text::escaped(value.name) + ": a secret, which only who may write can read");
    }
    lines += *value.running + "\n";
  }
  std::cout << lines;
}

}  // namespace

void addGet(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "get", "Print the values of parameters", GET_NOTES, get);
  command.add_option("GROUP.NAME", given->names, "The parameters")->required();
  addJson(command, given->json);
}

}  // namespace client
