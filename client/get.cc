#include <ostream>

#include "client/commands.h"
#include "client/failure.h"
#include "client/values.h"
#include "text/escape.h"

namespace client {

void get(Store& store, std::ostream& out, const std::vector<std::string>& names, bool json) {
  const bridge::NamedValues found = store.get(names);
  if (json) {
    out << printedJson(documentOf(found, CatalogueView(store.schema())));
    return;
  }
  if (found.values.size() != names.size()) {
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
  out << lines;
}

}  // namespace client
