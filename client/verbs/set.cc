// Changes of parameters.
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <map>

#include "client/assignment.h"
#include "client/failure.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "lparams/values/values.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::Change;

constexpr const char* NOTES =
    R"~(Everything is checked before anything is written; then all is written, over all groups, or
nothing. What is so already is not written.

  numbers       decimal, within their limits
  flags         0, 1, false or true
  enumerations  one of their names; a wrong one makes the error list them all
  strings       one line without control characters

"-" reads assignments from the standard input, one a line, with comments and empty lines
left out: this keeps a secret out of the list of processes, and takes back what "show"
printed. A secret given as "(hidden)" stays as it is.

Examples:
  lparamsctl set IKE.IKE_PORT=500 IKE.PERSISTENT_SA=true
  lparamsctl set --save 'USERS[anna].PMP_TIMEOUT=20'
  lparamsctl set - < settings.txt)~";

struct Given {
  std::vector<std::string> assignments;
  bool save = false;
};

constexpr const char* NOTHING_WRITTEN = "nothing was written";

/// The assignments of a command line.
struct Assignments {
  std::vector<Change> changes = {};
  std::vector<std::string> mistakes = {};
  std::map<std::string, size_t> lines = {};  ///< of the standard input, by the shown name

  void add(const std::string& text, size_t line = 0) {
    const auto change = parseAssignment(text);
    if (!change) {
      mistakes.push_back(inLine(line) + NO_ASSIGNMENT);
      return;
    }
    if (line > 0) lines.emplace(text::escaped(change->name), line);
    changes.push_back(*change);
  }

  static std::string inLine(size_t line) {
    return line == 0 ? "" : "line " + std::to_string(line) + ": ";
  }

  void addLines(std::istream& in) {
    size_t number = 0;
    for (std::string line; std::getline(in, line);) {
      ++number;
      if (!line.empty() && line.front() != '#') add(line, number);
    }
    // A standard stream takes a read error for the end of its input.
    if (in.bad() || std::ferror(stdin) != 0) {
      throw Failure(programs::EXIT_IO,
                    "cannot read the standard input; " + std::string(NOTHING_WRITTEN));
    }
  }
};

/// A hidden secret stays what it is, so that the output of `show` can be taken back.
void dropHidden(Store& store, std::vector<Change>& changes) {
  const auto isHidden = [](const Change& change) {
    return change.value == LPARAMS::Server::HIDDEN;
  };
  bridge::Names names;
  for (const Change& change : changes) {
    if (isHidden(change)) names.push_back(change.name);
  }
  if (names.empty()) return;
  const bridge::NamedValues found = store.get(names);
  std::erase_if(changes, [&](const Change& change) {
    return isHidden(change) && std::ranges::any_of(found.values, [&](const auto& value) {
             return value.secret && value.name == change.name;
           });
  });
}

/// The mistakes with the lines that they are in.
std::string located(const std::string& mistakes, const Assignments& given) {
  std::string located;
  for (size_t at = 0; at < mistakes.size();) {
    const size_t end = std::min(mistakes.find('\n', at), mistakes.size());
    const std::string mistake = mistakes.substr(at, end - at);
    const auto line = given.lines.find(mistake.substr(0, mistake.find(": ")));
    if (line != given.lines.end()) located += Assignments::inLine(line->second);
    located += mistake + "\n";
    at = end + 1;
  }
  return located + NOTHING_WRITTEN;
}

std::string linesOf(const bridge::NamedValues& done, bool saved) {
  std::string lines;
  for (const bridge::NamedValue& value : done.values) {
    lines += changeLine(value, saved || value.running == value.saved) + "\n";
  }
  return lines;
}

void set(Context& context, const Given& given) {
  Store& store = context.store();
  Assignments read;
  for (const std::string& text : given.assignments) {
    if (text == "-") {
      read.addLines(std::cin);
    } else {
      read.add(text);
    }
  }
  if (!read.mistakes.empty()) {
    std::string message;
    for (const std::string& mistake : read.mistakes) message += mistake + "\n";
    throw Failure(programs::EXIT_USAGE, message + NOTHING_WRITTEN);
  }
  bridge::NamedValues done;
  try {
    dropHidden(store, read.changes);
    if (!read.changes.empty()) done = store.set({{}, read.changes});
  } catch (const Failure& failure) {
    if (failure.status != programs::EXIT_ILLEGAL) throw;
    throw Failure(failure.status, located(failure.what(), read));
  }
  if (!given.save) {
    std::cout << linesOf(done, false);
    return;
  }
  try {
    store.save({});
  } catch (const Failure&) {
    std::cout << linesOf(done, false);
    throw;
  }
  std::cout << linesOf(done, true);
}

}  // namespace

void addSet(CLI::App& app, Context& context) {
  const auto [command, given] = addVerb(app, context, "set", "Change parameters", NOTES, set);
  command.add_option("GROUP.NAME=VALUE", given->assignments, "The parameters and their values")
      ->required();
  command.add_flag("--save", given->save, "Save the settings then");
}

}  // namespace client
