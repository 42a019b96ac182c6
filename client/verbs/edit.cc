// Settings in an editor.
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <optional>

#include "client/apply.h"
#include "client/change_report.h"
#include "client/edit_text.h"
#include "client/editor.h"
#include "client/failure.h"
#include "client/odd_texts.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::NamedValue;
using bridge::NamedValues;

constexpr const char* EDIT_NOTES =
    R"~(Opens a group, a user or everything in $VISUAL or $EDITOR, as lines GROUP.NAME=VALUE with what
each means. What is wrong comes back as remarks in the text. Then the changes are shown, and
written if you say so, all or nothing. If somebody has changed the same values meanwhile, you
see what they were, what they are now and what yours are, and are asked. Unless all is
written, the text stays in its file, whose path is printed.

Examples:
  lparamsctl edit IKE
  EDITOR=nano lparamsctl edit --save 'USERS[anna]')~";

struct EditGiven {
  std::string name;
  bool secrets = false;
  bool save = false;
  bool bytes = false;
};

/// Asks until the answer begins with one of the letters. No answer is the last of them.
char ask(const std::string& question, std::string_view letters) {
  for (std::string answer;;) {
    std::cout << question << ' ' << std::flush;
    if (!std::getline(std::cin, answer)) return letters.back();
    if (!answer.empty() && letters.find(answer.front()) != std::string_view::npos) {
      return answer.front();
    }
  }
}

using ByName = std::map<std::string, const NamedValue*, std::less<>>;

ByName byName(const NamedValues& values) {
  ByName found;
  for (const NamedValue& value : values.values) {
    if (value.running) found.emplace(value.name, &value);
  }
  return found;
}

class Editing {
 public:
  Editing(AgentStore& agent, const EditGiven& given)
      : agent_(agent),
        given_(given),
        catalogue_(agent.schema()),
        base_(agent.get(given.name.empty() ? bridge::Names() : bridge::Names{given.name})),
        baseByName_(byName(base_)) {}

  void run() {
    // Who may not write is told before the work.
    (void)agent_.tryOut({});
    text_ = editableText(base_, catalogue_, given_.secrets);
    file_.write(text_);
    std::cout << "editing " << file_.path() << '\n' << std::flush;
    try {
      while (editOnce() == Next::EditAgain) {
      }
    } catch (const Failure& failure) {
      if (written_) throw;
      file_.keep();
      throw Failure(failure.status, std::string(failure.what()) + "\n" + whereTextIs());
    }
  }

 private:
  enum class Next { EditAgain, Done };

  /// What would be written, and what it was found out with.
  struct Proposal {
    NamedValues now;
    Done done;
    ByName theirs;  // of `now`
  };

  Next editOnce() {
    file_.edit();
    const std::string edited = withoutRemarks(file_.read());
    file_.write(edited);
    if (edited == text_) return nothing();
    const WantedDocument document = changesIn(edited);
    std::vector<documents::Mistake> mistakes;
    std::optional<Proposal> proposal = propose(document, mistakes);
    if (!proposal) return refused(edited, mistakes);
    return offer(document, std::move(*proposal));
  }

  Next nothing() {
    std::cout << "nothing to change\n";
    return Next::Done;
  }

  /// What the text says, without what it says as it was.
  WantedDocument changesIn(const std::string& edited) const {
    documents::Document document = documents::read(edited);
    std::erase_if(document.values, [&](const documents::Value& value) {
      const auto found = baseByName_.find(value.name);
      return found != baseByName_.end() && *found->second->running == value.text;
    });
    std::erase_if(document.users, [&](const documents::User& user) {
      const std::string head = "USERS[" + user.name + "].";
      const auto found = baseByName_.lower_bound(head);
      return found != baseByName_.end() && found->first.starts_with(head);
    });
    return {file_.path(), std::move(document), catalogue_};
  }

  /// Nothing, and the mistakes, if the agent would not take it.
  std::optional<Proposal> propose(const WantedDocument& document,
                                  std::vector<documents::Mistake>& mistakes) {
    Proposal proposal{.now = agent_.get({}), .done = {}, .theirs = {}};
    proposal.theirs = byName(proposal.now);
    proposal.done.steps = stepsTo(document.wanted(proposal.now), proposal.now);
    std::string refusal = given_.bytes ? "" : oddTexts(proposal.done.steps, proposal.now);
    try {
      proposal.done.values = agent_.tryOut({{}, proposal.done.steps});
    } catch (const Failure& failure) {
      if (failure.status != programs::EXIT_ILLEGAL) throw;
      refusal += failure.what();
    }
    mistakes = document.mistakes(refusal);
    if (!mistakes.empty()) return std::nullopt;
    return proposal;
  }

  Next refused(const std::string& edited, const std::vector<documents::Mistake>& mistakes) {
    for (const documents::Mistake& mistake : mistakes) std::cout << mistake.text << '\n';
    file_.write(withRemarks(edited, mistakes));
    if (ask("edit again? [y/n]", "yn") == 'y') return Next::EditAgain;
    return givenUp();
  }

  Next offer(const WantedDocument& document, Proposal proposal) {
    for (;;) {
      const ChangeReport report(proposal.done);
      if (report.empty()) return nothing();
      std::cout << linesOf(report, Kept::Saved);
      const bool conflict = showConflicts(proposal);
      switch (ask(conflict ? "replace theirs by yours? [y/n/e to edit again]"
                           : "write this? [y/n/e to edit again]",
                  "yen")) {
        case 'e':
          return Next::EditAgain;
        case 'n':
          return givenUp();
        default:
          break;
      }
      if (write(proposal)) return finish();
      std::vector<documents::Mistake> mistakes;
      std::optional<Proposal> next = propose(document, mistakes);
      if (!next) throw document.failure({});
      const bool asShown = next->done.values.values == proposal.done.values.values;
      proposal = std::move(*next);
      if (asShown && write(proposal)) return finish();
      std::cout << "somebody has changed these settings meanwhile\n";
    }
  }

  /// What others have made of the values since the text was made.
  bool showConflicts(const Proposal& proposal) const {
    bool any = false;
    for (const bridge::Change& step : proposal.done.steps) {
      if (step.kind != bridge::Change::Set) continue;
      const auto base = baseByName_.find(step.name);
      if (base == baseByName_.end()) continue;
      const auto theirs = proposal.theirs.find(step.name);
      if (theirs == proposal.theirs.end()) continue;
      if (theirs->second->running == base->second->running) continue;
      any = true;
      const NamedValue& of = *base->second;
      std::cout << text::escaped(step.name) << " was changed meanwhile:\n"
                << "  before: " << shownValue(of, of.running) << '\n'
                << "  theirs: " << shownValue(of, theirs->second->running) << '\n'
                << "  yours:  " << shownValue(of, step.value) << '\n';
    }
    return any;
  }

  bool write(const Proposal& proposal) {
    try {
      (void)agent_.set({proposal.now.revisions, proposal.done.steps});
      written_ = true;
      return true;
    } catch (const Conflict&) {
      return false;
    }
  }

  Next finish() {
    if (given_.save) agent_.save({});
    std::cout << (given_.save ? "written and saved\n" : "written, not saved\n");
    return Next::Done;
  }

  Next givenUp() {
    file_.keep();
    std::cout << "nothing was written; " << whereTextIs() << '\n';
    return Next::Done;
  }

  std::string whereTextIs() const { return "your text is in " + file_.path(); }

  AgentStore& agent_;
  const EditGiven& given_;
  const CatalogueView catalogue_;
  const NamedValues base_;
  const ByName baseByName_;
  EditedFile file_;
  std::string text_;  // as it was made
  bool written_ = false;
};

void edit(Context& context, const EditGiven& given) {
  if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDOUT_FILENO) == 0) {
    throw Failure(programs::EXIT_USAGE,
                  "\"edit\" asks on a terminal, and there is none; \"apply\" takes a document");
  }
  Editing(context.agent(), given).run();
}

}  // namespace

void addEdit(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "edit", "Change settings in an editor", EDIT_NOTES, edit);
  command.add_option("GROUP", given->name, "A group or user; everything if it is left out");
  command.add_flag("--secrets", given->secrets, "Show secrets instead of (hidden)");
  command.add_flag("--save", given->save, "Save the settings then");
  addBytes(command, given->bytes);
}

}  // namespace client
