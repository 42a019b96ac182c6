#include "client/assignment.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <optional>
#include <sstream>

#include "client/odd_texts.h"
#include "client/terminal.h"
#include "client/user_file.h"
#include "editing/shown_name.h"
#include "lparams/values/values.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::Change;

constexpr const char* NO_ASSIGNMENT = "an assignment has no \"=\"; write NAME=VALUE";
constexpr const char* NOTHING_WRITTEN = "nothing was written";
constexpr size_t MAX_VALUE = 1024 * 1024;  // bytes read for one; many times the longest text

/// Also tells a read error, which a standard stream takes for the end of its input.
std::string standardInput() {
  std::ostringstream text;
  text << std::cin.rdbuf();
  if (std::cin.bad() || std::ferror(stdin) != 0) {
    throw Failure(programs::EXIT_IO,
                  "cannot read the standard input; " + std::string(NOTHING_WRITTEN));
  }
  return std::move(text).str();
}

std::string withoutLineEnd(std::string text) {
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string inLine(size_t line) { return "line " + std::to_string(line) + ": "; }

bool isHidden(const Change& step) { return step.value == LPARAMS::Server::HIDDEN; }

}  // namespace

void Assignments::takeStandardInput() {
  if (inputTaken_) {
    throw Failure(programs::EXIT_USAGE, "the standard input can be given only once");
  }
  inputTaken_ = true;
}

void Assignments::addMistake(size_t line, const std::string& mistake) {
  mistakes_.push_back(line == 0 ? mistake : inLine(line) + mistake);
}

void Assignments::add(const std::string& text, const std::string& owner) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos) {
    illForm_ = true;
    return addMistake(0, NO_ASSIGNMENT);
  }
  std::string name = owner + text.substr(0, equals);
  std::string value = text.substr(equals + 1);
  if (value == "@-") {
    takeStandardInput();
    value = withoutLineEnd(standardInput());
  } else if (value.starts_with("@@")) {
    value.erase(0, 1);
    commandLine_.push_back(name);
  } else if (value.starts_with('@')) {
    value = withoutLineEnd(readUserFile(value.substr(1), MAX_VALUE));
  } else if (!value.empty() && value != LPARAMS::Server::HIDDEN) {
    commandLine_.push_back(name);
  }
  steps.push_back({Change::Set, std::move(name), std::move(value)});
}

void Assignments::addLines() {
  takeStandardInput();
  size_t number = 0;
  for (const std::string& line : splitLines(standardInput())) {
    ++number;
    if (line.empty() || line.front() == '#') continue;
    const size_t equals = line.find('=');
    if (equals == std::string::npos) {
      illForm_ = true;
      addMistake(number, NO_ASSIGNMENT);
      continue;
    }
    steps.push_back({Change::Set, line.substr(0, equals), line.substr(equals + 1)});
    lines_.emplace(editing::shownName(steps.back().name), number);
  }
}

void Assignments::ask(const std::string& name) {
  Terminal terminal;
  const std::string shown = text::escaped(name);
  std::string value = terminal.askHidden(shown + ": ", MAX_VALUE);
  if (value != terminal.askHidden(shown + ", once more: ", MAX_VALUE)) {
    throw Failure(programs::EXIT_ILLEGAL, shown + ": the two are not the same; " + NOTHING_WRITTEN);
  }
  steps.push_back({Change::Set, name, std::move(value)});
}

void Assignments::check(Store& store, bool bytes) {
  bridge::Names names;  // whose values may stay
  for (const Change& step : steps) {
    const bool looked = isHidden(step) || !showsAsItIs(step.value);
    if (step.kind == Change::Set && looked) names.push_back(step.name);
  }
  bridge::NamedValues present;
  try {
    if (!names.empty()) present = store.get(names);
  } catch (const Failure& failure) {
    if (failure.status != programs::EXIT_ILLEGAL) throw;
    return;  // names that are not there: the store says so of the steps, too
  }
  std::erase_if(steps, [&](const Change& step) {
    const auto value = std::ranges::find(present.values, step.name, &bridge::NamedValue::name);
    return value != present.values.end() && value->secret && isHidden(step);
  });
  if (bytes) return;
  for (const std::string& mistake : splitLines(oddTexts(steps, present))) {
    mistakes_.push_back(located(mistake));
  }
}

/// With its line, if what it is about stands in one of the standard input.
std::string Assignments::located(const std::string& mistake) const {
  const auto line = lines_.find(mistake.substr(0, mistake.find(": ")));
  return line == lines_.end() ? mistake : inLine(line->second) + mistake;
}

bridge::NamedValues Assignments::carryOut(Store& store) {
  std::string mistakes;
  for (const std::string& mistake : mistakes_) mistakes += mistake + "\n";
  try {
    if (mistakes_.empty()) return steps.empty() ? bridge::NamedValues() : store.set({{}, steps});
    if (!steps.empty()) (void)store.tryOut({{}, steps});
  } catch (const Failure& failure) {
    if (failure.status != programs::EXIT_ILLEGAL && mistakes_.empty()) throw;
    if (failure.status == programs::EXIT_ILLEGAL) {
      for (const std::string& mistake : splitLines(failure.what())) {
        mistakes += located(mistake) + "\n";
      }
    }
  }
  throw Failure(illForm_ ? programs::EXIT_USAGE : programs::EXIT_ILLEGAL,
                mistakes + NOTHING_WRITTEN);
}

std::vector<std::string> Assignments::seen(const bridge::NamedValues& done) const {
  std::vector<std::string> names;
  for (const bridge::NamedValue& value : done.values) {
    if (value.secret && std::ranges::find(commandLine_, value.name) != commandLine_.end()) {
      names.push_back(value.name);
    }
  }
  return names;
}

}  // namespace client
