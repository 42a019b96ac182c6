// The verbs of the command line, each in a file of its own with its options, its manual and what it
// does.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace client {

struct Context;

// Each adds its verb, which throws Failure if it cannot do what it is for. REQUIRES: the context
// outlives the command line.

void addList(CLI::App& app, Context& context);
void addDescribe(CLI::App& app, Context& context);
void addGet(CLI::App& app, Context& context);
void addShow(CLI::App& app, Context& context);
void addSet(CLI::App& app, Context& context);
void addUser(CLI::App& app, Context& context);
void addDiff(CLI::App& app, Context& context);
void addRevert(CLI::App& app, Context& context);
void addReset(CLI::App& app, Context& context);
void addApply(CLI::App& app, Context& context);
void addBackup(CLI::App& app, Context& context);
void addEdit(CLI::App& app, Context& context);
void addRestore(CLI::App& app, Context& context);
void addConfirm(CLI::App& app, Context& context);
void addHistory(CLI::App& app, Context& context);
void addRollback(CLI::App& app, Context& context);
void addSave(CLI::App& app, Context& context);
void addStatus(CLI::App& app, Context& context);
void addWatch(CLI::App& app, Context& context);
void addCheck(CLI::App& app, Context& context);
void addFmt(CLI::App& app, Context& context);

/// Prints what the last of the words of a command line, which may have begun, could become. It is a
/// verb for shells, which the help leaves out: it completes what the command line has, so it cannot
/// be a part of it. The first line tells what follows:
///   words   what the word could become, one a line; what ends with "=" or "." goes on
///   files   the word is the next line, which may be empty, and then the path of a file
/// Throws std::logic_error where the command line has an argument of a kind unknown here.
void complete(CLI::App& app, Context& context, const std::vector<std::string>& words);

}  // namespace client
