// The verbs of the command line, each in a file of its own with its options, its manual and what it
// does.
#pragma once

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

}  // namespace client
