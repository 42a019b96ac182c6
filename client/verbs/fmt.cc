// Settings files as a save writes them, without an agent.
#include <iostream>
#include <optional>
#include <sstream>
#include <string>

#include "checking/check.h"
#include "client/directory_lock.h"
#include "client/failure.h"
#include "client/user_file.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "inspection/settings_completeness.h"
#include "text/escape.h"

namespace client {
namespace {

using checking::Checked;
using inspection::Remark;

constexpr const char* FMT_NOTES =
    R"~(Prints a settings file as a save would write it: all parameters, in their order. Settings of an
earlier version (XML) are printed as the settings file that their import leads to. The output
holds the file's secrets.

What a save would not write (unknown names, comments, values that a load changes) is told as
by "check", and nothing is printed or written, unless --force is given.

Examples:
  lparamsctl fmt localsettings.ini
  lparamsctl fmt --write localsettings.ini
  lparamsctl fmt --check localsettings.ini || echo "not as a save would write it")~";

struct FmtGiven {
  std::string file;
  bool write = false;
  bool check = false;
  bool force = false;
};

/// The lines of what is lost, or of everything where nothing can be taken.
std::string reasons(const std::string& file, const Checked& checked) {
  std::string lines;
  for (const Remark& remark : checked.remarks) {
    if (remark.loses || !checked.usable) lines += inspection::lineOf(file, remark) + "\n";
  }
  if (checked.leftOut > 0) lines += "and " + std::to_string(checked.leftOut) + " more\n";
  return lines;
}

/// The text of the file as a save would write it.
std::string formatted(const FmtGiven& given, const std::string& text) {
  const Checked checked = checking::check(text);
  if (checked.form == Checked::Document || (given.write && checked.form == Checked::Legacy)) {
    throw Failure(programs::EXIT_BAD_FILE, text::escaped(given.file) + " is no settings file");
  }
  const std::string lost = reasons(given.file, checked);
  if (!checked.usable) throw Failure(programs::EXIT_BAD_FILE, lost);
  if (!lost.empty() && !given.force) {
    throw Failure(programs::EXIT_ILLEGAL,
                  lost + "this would be lost; --force does it all the same");
  }
  std::ostringstream out;
  (void)checked.settings->save(out, 0);
  return std::move(out).str();
}

void format(Context& /*context*/, const FmtGiven& given) {
  if (given.write && given.file == "-") {
    throw Failure(programs::EXIT_USAGE, "the standard input cannot be written; name a file");
  }
  std::optional<DirectoryLock> lock;
  if (given.write) lock.emplace(given.file, DirectoryLock::Alone, "stop it first");
  const std::string text = readUserInput(given.file, inspection::MAX_SETTINGS_SIZE);
  const std::string wanted = formatted(given, text);
  if (given.check) {
    if (text != wanted) throw Failure(programs::EXIT_DIFFERS, "");
  } else if (!given.write) {
    std::cout << wanted;
  } else if (text != wanted) {
    replaceUserFile(given.file, wanted);
  }
}

}  // namespace

void addFmt(CLI::App& app, Context& context) {
  const auto [command, given] = addVerb(
      app, context, "fmt", "Print a settings file as a save would write it", FMT_NOTES, format);
  command.add_option("FILE", given->file, "The file; - is the standard input")->required();
  auto* const check = command.add_flag("--check", given->check,
                                       "Print nothing; exit with 1 if the file would change");
  command.add_flag("-w,--write", given->write, "Write the file in place, in one step")
      ->excludes(check);
  command.add_flag("--force", given->force, "Leave out what a save would not write");
}

}  // namespace client
