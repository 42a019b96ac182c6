// How a verb becomes a part of the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "client/assignment.h"
#include "client/change_report.h"
#include "client/context.h"
#include "client/selection.h"

namespace client {

/// A verb, and what its options and arguments are read into.
template <typename Given>
struct Verb {
  CLI::App& command;
  std::shared_ptr<Given> given;
};

/// Adds a verb. `notes` are its manual, behind the options. `run` carries it out when the whole
/// command line has been read; it prints nothing unless it has all that it needs.
template <typename Given>
Verb<Given> addVerb(CLI::App& parent, Context& context, const char* name, const char* description,
                    const char* notes, void (*run)(Context& context, const Given& given)) {
  CLI::App& command = *parent.add_subcommand(name, description);
  command.footer(notes);
  const auto given = std::make_shared<Given>();
  command.callback([&context, given, run] { run(context, *given); });
  return {command, given};
}

/// Whether a change is to be saved, too.
struct SaveOption {
  bool wanted = false;
  Saving how = {};
};

// Options that several verbs have.

void addJson(CLI::App& command, bool& json);
void addBytes(CLI::App& command, bool& bytes);
void addSave(CLI::App& command, SaveOption& save);
void addSelection(CLI::App& command, Selection& what);

/// What a revision's number may be. A negative one is read as one above them.
CLI::Range revisionNumbers();

/// Prints what a verb has changed, and before that saves it if that is wanted.
void finish(const ChangeReport& report, const SaveOption& save, bool json, Store& store);

/// Carries out what a verb has gathered, and prints what it has changed. Warns of secrets that the
/// command line spells out.
void carryOut(Store& store, Assignments& assignments, bool bytes, const SaveOption& save,
              bool json);

}  // namespace client
