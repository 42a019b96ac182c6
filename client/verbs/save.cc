// Has settings written to their file.
#include <iostream>

#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"

namespace client {
namespace {

constexpr const char* SAVE_NOTES =
    R"~(Prints "saved" when the file agrees with the settings and would survive a power cut, or
why it was not written. The agent refuses to save settings that it could not load whole, and
to write over a file that somebody has edited meanwhile; --force saves all the same. The
agent keeps a copy of what it replaces then. A message is kept in the agent's history.)~";

struct SaveGiven {
  Saving how;
  bool json = false;
};

void save(Context& context, const SaveGiven& given) {
  context.agent().save(given.how);
  std::cout << (given.json ? printedJson({{"saved", true}}) : "saved\n");
}

}  // namespace

void addSave(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "save", "Write the settings file", SAVE_NOTES, save);
  command.add_flag("--force", given->how.force, "Save what the agent would not save otherwise");
  command.add_option("--message", given->how.message, "Why, for the history")->type_name("TEXT");
  addJson(command, given->json);
}

}  // namespace client
