// How a verb becomes a part of the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "client/context.h"

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

inline void addJson(CLI::App& command, bool& json) {
  command.add_flag("--json", json, "Print JSON");
}

}  // namespace client
