#include "client/verbs/verb.h"

#include <cstdint>
#include <iostream>
#include <limits>

#include "text/escape.h"

namespace client {

void addJson(CLI::App& command, bool& json) { command.add_flag("--json", json, "Print JSON"); }

void addBytes(CLI::App& command, bool& bytes) {
  command.add_flag("--bytes", bytes, "Take texts that do not show what they are, too");
}

void addSave(CLI::App& command, SaveOption& save) {
  CLI::Option* const wanted = command.add_flag("--save", save.wanted, "Save the settings then");
  command.add_option("--message", save.how.message, "Why, for the history of what was saved")
      ->type_name("TEXT")
      ->needs(wanted);
}

void addSelection(CLI::App& command, Selection& what) {
  command.add_option("NAME", what.names, "Parameters, groups or users");
  command.add_flag("--all", what.all, "Everything");
}

CLI::Range revisionNumbers() {
  return {uint64_t{1}, uint64_t{std::numeric_limits<int64_t>::max()}};
}

void finish(const ChangeReport& report, const SaveOption& save, bool json, Store& store) {
  if (save.wanted) {
    saveAndPrint(std::cout, report, save.how, json, store);
  } else {
    print(std::cout, report, Kept::InMemory, json, store);
  }
}

void carryOut(Store& store, Assignments& assignments, bool bytes, const SaveOption& save,
              bool json) {
  assignments.check(store, bytes);
  const bridge::NamedValues values = assignments.carryOut(store);
  for (const std::string& name : assignments.seen(values)) {
    std::cerr << "lparamsctl: warning: " << text::escaped(name)
              << ": other users may have seen this secret in the list of processes; --ask and "
                 "NAME=@FILE keep it out of there\n";
  }
  finish(ChangeReport({assignments.steps, values}, ChangeReport::Told), save, json, store);
}

}  // namespace client
