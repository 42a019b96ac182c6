#include "client/describe.h"

#include <algorithm>
#include <ostream>

#include "client/failure.h"
#include "lparams/catalogue/catalogue.h"
#include "lparams/values/values.h"
#include "text/escape.h"

namespace client {
namespace {

using namespace LPARAMS::Server;

void printParam(std::ostream& out, const std::string& fullName, Param& param, bool onBridge) {
  out << fullName << "\n";
  if (const auto meaning = meaningOf(param); !meaning.empty())
    out << "  meaning: " << meaning << "\n";
  out << "  legal:   " << legalValues(param) << "\n"
      << "  default: " << valueText(param) << "\n"
      << "  kept in: " << (onBridge ? "the agent and its settings file" : "the settings file only")
      << "\n";
}

}  // namespace

void describe(std::ostream& out, const std::string& name) {
  const Catalogue catalogue;
  USER_t user;
  bool found = false;
  for (ParamGroup* group : catalogue.groups()) {
    const ParamGroup& owner = group == catalogue.USERS ? user : *group;
    for (Param* param : owner.fileParams) {
      const std::string fullName = std::string(group->name) + "." + param->name;
      if (name != group->name && name != param->name && name != fullName) continue;
      const bool onBridge = std::ranges::find(owner.wireParams, param) != owner.wireParams.end();
      printParam(out, fullName, *param, onBridge);
      found = true;
    }
  }
  if (!found) {
    throw Failure(ExitCode::Usage,
                  text::inQuotes(name) + " is no group and no parameter; see lparamsctl show");
  }
}

}  // namespace client
