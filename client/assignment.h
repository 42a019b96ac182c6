// Assignments of the command line.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "bridge/named_values.h"
#include "client/failure.h"
#include "client/store.h"

namespace client {

/// The steps that a command line asks for, and what is wrong with it. All that is wrong is told at
/// once, also what the store says of the steps that could be read.
class Assignments {
 public:
  /// NAME=VALUE, split at the first "="; NAME=@FILE takes the value from a file, without the line
  /// end behind it, and NAME=@- from the standard input; NAME=@@TEXT is the text "@TEXT". Nothing
  /// of a text that is no assignment is shown: it may be a misspelt secret. `owner` goes in front
  /// of the name.
  void add(const std::string& text, const std::string& owner = {});

  /// The lines of the standard input, each NAME=VALUE with the value as it stands; empty ones and
  /// those that begin with "#" are left out.
  void addLines();

  /// Asks for the value on the terminal, twice and without an echo.
  void ask(const std::string& name);

  /// A user with this name is added by the steps or gets it.
  void add(bridge::Change step) { steps.push_back(std::move(step)); }

  /// Drops secrets that are given as "(hidden)": they stay what they are, so that the output of
  /// `show` can be taken back. Refuses new values that would not show what they are (control
  /// characters beyond ASCII, marks of direction, what is not UTF-8), unless `bytes`.
  void check(Store& store, bool bytes);

  /// Carries out all steps, or none. Throws Failure with every mistake.
  bridge::NamedValues carryOut(Store& store);

  std::vector<bridge::Change> steps = {};

  /// Secrets that were spelt out where other users of the system may have seen them.
  std::vector<std::string> seen(const bridge::NamedValues& done) const;

 private:
  void addMistake(size_t line, const std::string& mistake);
  void takeStandardInput();
  std::string located(const std::string& mistake) const;

  std::vector<std::string> mistakes_;
  bool illForm_ = false;                  // some are of the form of the command line
  std::map<std::string, size_t> lines_;   // of the standard input, by the shown name
  std::vector<std::string> commandLine_;  // names whose values the command line spells out
  bool inputTaken_ = false;
};

}  // namespace client
