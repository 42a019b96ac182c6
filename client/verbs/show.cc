// Settings as lines that "set" takes back.
#include <iostream>

#include "client/setting_lines.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"

namespace client {
namespace {

constexpr const char* SHOW_NOTES =
    R"~(Prints NAME=value lines, which "set -" takes back. A line that begins with "#" is a comment; it
also stands for a value that does not show what it is, such as one with control characters.
With --json the settings are one document, in which a hidden secret is null.

Examples:
  lparamsctl show
  lparamsctl show USERS
  lparamsctl show --secrets IKE)~";

struct ShowGiven {
  std::string name;
  bool secrets = false;
  bool json = false;
};

void show(Context& context, const ShowGiven& given) {
  const auto printed = given.json ? settingDocument : settingLines;
  std::cout << printed(context.store(), given.name, given.secrets);
}

}  // namespace

void addShow(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "show", "Print all settings, a group or a user", SHOW_NOTES, show);
  command.add_option("GROUP", given->name, "The group; all if it is left out");
  command.add_flag("--secrets", given->secrets, "Print secrets instead of (hidden)");
  addJson(command, given->json);
}

}  // namespace client
