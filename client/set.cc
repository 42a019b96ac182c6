#include <algorithm>
#include <istream>
#include <span>

#include "client/assignment.h"
#include "client/commands.h"
#include "client/failure.h"
#include "client/settings.h"

namespace client {
namespace {

using namespace LPARAMS::Server;

struct Change {
  Place place;
  Assignment assignment;
};

/// A hidden secret stays what it is, so that the output of `show` can be taken back.
void apply(const Change& change, Param& param) {
  if (isSecret(param) && change.assignment.value == HIDDEN) return;
  assign(param, change.assignment.value, change.assignment.name);
}

/// Checks everything but that an entry exists.
Change parseChange(Settings& settings, const std::string& text) {
  const Assignment assignment = parseAssignment(text);
  Change change{settings.place(assignment.name), assignment};
  apply(change, settings.example(change.place));
  return change;
}

/// The assignments with the lines of `in` in the place of "-".
std::vector<std::string> expand(const std::vector<std::string>& assignments, std::istream& in) {
  std::vector<std::string> texts;
  for (const std::string& text : assignments) {
    if (text != "-") {
      texts.push_back(text);
      continue;
    }
    for (std::string line; std::getline(in, line);) {
      if (!line.empty() && line.front() != '#') texts.push_back(line);
    }
  }
  return texts;
}

using Groups = std::span<ParamGroup* const>;

std::string listed(const char* heading, Groups groups) {
  return groups.empty() ? std::string() : heading + namesOf(groups);
}

void writeAll(Store& store, Groups groups) {
  for (size_t i = 0; i < groups.size(); ++i) {
    try {
      store.write(*groups[i]);
    } catch (const Failure& failure) {
      // A group whose reply is missing may have arrived.
      const size_t doubtful = failure.code == ExitCode::NoAgent ? 1 : 0;
      throw Failure(failure.code, failure.what() + listed("; written: ", groups.first(i)) +
                                      listed("; perhaps written: ", groups.subspan(i, doubtful)) +
                                      listed("; not written: ", groups.subspan(i + doubtful)));
    }
  }
}

}  // namespace

void set(Store& store, const std::vector<std::string>& assignments, std::istream& in) {
  Settings settings;
  std::vector<Change> changes;
  for (const std::string& text : expand(assignments, in)) {
    changes.push_back(parseChange(settings, text));
  }

  std::vector<ParamGroup*> groups;
  for (const Change& change : changes) {
    if (std::ranges::find(groups, change.place.group) != groups.end()) continue;
    groups.push_back(change.place.group);
    store.read(*change.place.group);
  }
  for (const Change& change : changes) apply(change, settings.param(change.place));
  writeAll(store, groups);
}

}  // namespace client
