#include "agent/confirmation/confirmation.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <system_error>

#include "agent/base/log.h"
#include "agent/confirmation/going_back.h"
#include "agent/history/history.h"
#include "agent/state/durable_file.h"
#include "bridge/history.h"
#include "editing/copy_group.h"
#include "editing/draft.h"
#include "editing/settings_changes.h"
#include "inspection/settings_completeness.h"
#include "inspection/settings_text.h"
#include "text/utc.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;
using namespace std::chrono;
using bridge::Reason;
using bridge::Reply;

constexpr int APPLY_ATTEMPTS = 4;                  // of a change, while others change settings, too
constexpr milliseconds RETRY_PAUSE = seconds(10);  // before what could not go back is tried again
constexpr const char* NOT_CONFIRMED = "not confirmed in time: the changes have gone back";

int64_t systemTime() {
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

/// "2026-11-22T18:00:00Z".
std::string utcText(int64_t time) { return text::utc(static_cast<std::time_t>(time / 1000)); }

void copyAll(const Catalogue& from, const Catalogue& to) {
  const auto groups = to.groups();
  size_t i = 0;
  for (ParamGroup* group : from.groups()) editing::copyGroup(*group, *groups[i++]);
}

/// The groups that are not the same in both, of the second.
std::vector<ParamGroup*> groupsThatDiffer(Catalogue& from, Catalogue& to) {
  const auto changes = editing::changesBetween(from, to);
  std::vector<ParamGroup*> groups;
  for (ParamGroup* group : to.groups()) {
    const auto isOf = [&](const bridge::NamedValue& change) {
      return change.name.substr(0, change.name.find_first_of(".[")) == group->name;
    };
    if (std::ranges::any_of(changes, isOf)) groups.push_back(group);
  }
  return groups;
}

std::string joined(const std::vector<std::string>& names) {
  constexpr size_t TOLD = 20;
  std::string text;
  for (size_t i = 0; i < std::min(names.size(), TOLD); ++i) {
    text += (i > 0 ? ", " : "") + shortened(names[i]);
  }
  return names.size() > TOLD ? text + ", ..." : text;
}

Reply tooLong(const std::string& what, size_t given, size_t allowed, const char* unit) {
  return {0, Reason::IllegalValue,
          what + " of " + std::to_string(given) + " " + unit + " is too long; expected at most " +
              std::to_string(allowed)};
}

}  // namespace

/// What a change would do, or why it is refused.
struct Confirmation::Plan {
  Reply refusal = {};  // its result is 1 if there is none
  std::string before = {};
  std::string after = {};
  std::vector<bridge::GroupRevision> revisions = {};  // of all groups
  bool writes = false;
};

Confirmation::Confirmation(Catalogue& settings, SettingsKeeper& keeper,
                           const editing::RecordCheck& check, const SetCommand& set,
                           CommandService& service)
    : settings_(settings),
      keeper_(keeper),
      check_(check),
      set_(set),
      service_(service),
      writer_(settings, service),
      thread_([this] { run(); }) {}

Confirmation::~Confirmation() {
  {
    const MutexLock lock(mutex_);
    stopping_ = true;
    changed_.notifyAll();
  }
  thread_.join();
}

Confirmation::State Confirmation::state() const {
  const MutexLock lock(mutex_);
  State state{.problem = problem_};
  if (waiting_) state.until = static_cast<std::time_t>(waiting_->until / 1000);
  return state;
}

// --- Changes

Reply Confirmation::apply(BridgeSession& session, const std::string& input) {
  if (!CommandService::mayWrite(session)) {
    return {0, Reason::NotAuthorised, session.command.refusal};
  }
  const auto request = bridge::decodeApplyRequest(input);
  if (!request) return {0, Reason::MalformedInput, "the changes cannot be read to their end"};
  if (request->confirmSeconds > bridge::MAX_CONFIRM_SECONDS) {
    return tooLong("a time", request->confirmSeconds, bridge::MAX_CONFIRM_SECONDS, "seconds");
  }
  if (request->message.size() > bridge::MAX_SAVE_MESSAGE) {
    return tooLong("a message", request->message.size(), bridge::MAX_SAVE_MESSAGE, "bytes");
  }
  Reply reply = request->confirmSeconds == 0 ? set_.execute(session, request->changes)
                                             : applyConfirmed(session, *request);
  if (reply.result == 0 || !request->save) return reply;
  Reply saved = CommandService::save(session, false, request->message);
  if (saved.result != 0) return reply;
  saved.text = "the changes were made, but not saved: " + saved.text;
  return saved;
}

Reply Confirmation::applyConfirmed(BridgeSession& session, const bridge::ApplyRequest& request) {
  Reply refusal;
  if (!begin(refusal)) return refusal;
  auto changes = std::make_shared<Unconfirmed>();
  auto made = Made::Nothing;
  try {
    for (int left = APPLY_ATTEMPTS;; --left) {
      Plan planned = plan(request.changes);
      Reply reply = std::move(planned.refusal);
      const bool isPlanned = reply.result != 0;
      if (isPlanned && planned.writes) {
        changes->seconds = request.confirmSeconds;
        changes->until = systemTime() + milliseconds(seconds(request.confirmSeconds)).count();
        changes->before = std::move(planned.before);
        changes->after = std::move(planned.after);
        made = Made::File;
        replaceFileAtomically(path(), encode(*changes));
      }
      if (isPlanned) {
        // Only what was planned: what others have written meanwhile is a conflict.
        made = planned.writes ? Made::Changes : made;
        reply = set_.execute(session, {std::move(planned.revisions), request.changes.changes});
        if (reply.reason == Reason::Conflict) made = std::min(made, Made::File);
        if (reply.reason == Reason::Conflict && left > 1) continue;
      }
      if (reply.result != 0 && planned.writes) {
        wait(changes, session);
      } else {
        giveUp(changes, made);
      }
      return reply;
    }
  } catch (const std::system_error& error) {
    giveUp(changes, made);
    return {0, Reason::SaveRefused,
            std::string("nothing was changed, because what would go back cannot be kept: ") +
                error.what()};
  } catch (...) {
    giveUp(changes, made);
    throw;
  }
}

/// The change was not made as a whole.
void Confirmation::giveUp(const std::shared_ptr<const Unconfirmed>& changes, Made made) {
  if (made == Made::Changes) return takeBack(changes);
  try {
    if (made == Made::File) removeFile(path());
    becomeIdle();
  } catch (const std::exception&) {
    takeBack(changes);
  }
}

/// Tries the change, and what a file would hold of the settings before and after it.
Confirmation::Plan Confirmation::plan(const bridge::NamedChanges& changes) {
  const MutexLock turn(service_.writeTurn());
  for (const auto& [group, revision] : changes.revisions) {
    if (auto conflict = service_.conflictOf(group, revision)) {
      return {.refusal = std::move(*conflict)};
    }
  }
  editing::Draft draft(settings_, check_, editing::Draft::WithUsers);
  for (const bridge::Change& change : changes.changes) draft.apply(change);
  draft.finish();
  if (!draft.mistakes().empty()) {
    return {.refusal = {0, Reason::IllegalValue, draft.mistakes().text()}};
  }
  Catalogue before;
  copyAll(settings_, before);
  const auto expected = editing::changesBetween(before, draft.settings());
  // Member by member: GCC 12 destroys members twice if a later initializer throws.
  Plan plan;
  plan.refusal.result = 1;
  plan.before = inspection::textOf(before);
  plan.after = inspection::textOf(draft.settings());
  for (const std::string* text : {&plan.before, &plan.after}) {
    if (inspection::incompleteBecause(*text).empty()) continue;
    return {.refusal = {0, Reason::IllegalValue,
                        "no settings file can hold these settings, so that nothing could go back"}};
  }
  if (editing::changesBetween(*inspection::settingsIn(plan.before),
                              *inspection::settingsIn(plan.after)) != expected) {
    return {.refusal = {0, Reason::IllegalValue,
                        "no settings file can hold what would be changed, so that it could not go "
                        "back"}};
  }
  plan.writes = !draft.changedGroups().empty();
  for (const ParamGroup* group : settings_.groups()) {
    plan.revisions.push_back({group->name, service_.changes().revision(group->name)});
  }
  return plan;
}

bool Confirmation::begin(Reply& refusal) {
  const MutexLock lock(mutex_);
  if (phase_ == Phase::Idle) {
    phase_ = Phase::Beginning;
    return true;
  }
  const std::string until = waiting_ ? " until " + utcText(waiting_->until) : "";
  refusal = {0, Reason::Conflict,
             "other changes wait for confirmation" + until +
                 "; confirm them, or wait until they have gone back"};
  return false;
}

void Confirmation::wait(std::shared_ptr<const Unconfirmed> changes, const BridgeSession& session) {
  log(Level::Notice, "changes wait for confirmation",
      {{"until", utcText(changes->until)},
       {"uid", session.uid},
       {"pid", session.pid},
       {"program", session.program}});
  const auto time = seconds(changes->seconds);
  wait(std::move(changes), time);
}

void Confirmation::wait(std::shared_ptr<const Unconfirmed> changes, milliseconds time) {
  const MutexLock lock(mutex_);
  phase_ = Phase::Waiting;
  waiting_ = std::move(changes);
  end_ = Clock::now() + time;
  changed_.notifyAll();
}

void Confirmation::becomeIdle() {
  const MutexLock lock(mutex_);
  phase_ = Phase::Idle;
  waiting_ = nullptr;
  problem_.clear();
}

Reply Confirmation::confirm(BridgeSession& session) {
  if (!CommandService::mayWrite(session)) {
    return {0, Reason::NotAuthorised, session.command.refusal};
  }
  {
    const MutexLock lock(mutex_);
    const bool over = !problem_.empty() || Clock::now() >= end_;
    if (phase_ == Phase::GoingBack || (phase_ == Phase::Waiting && over)) {
      return {0, Reason::Conflict, "too late: the changes go back"};
    }
    if (phase_ != Phase::Waiting) return {0, Reason::Conflict, "no changes wait for confirmation"};
    phase_ = Phase::Confirming;
  }
  std::string failure;
  try {
    removeFile(path());
  } catch (const std::exception& error) {
    failure = error.what();
  }
  if (failure.empty()) {
    log(Level::Notice, "changes were confirmed",
        {{"uid", session.uid}, {"pid", session.pid}, {"program", session.program}});
    becomeIdle();
    return {.result = 1};
  }
  const MutexLock lock(mutex_);
  phase_ = Phase::Waiting;
  changed_.notifyAll();
  return {0, Reason::SaveRefused, "the changes could not be confirmed durably: " + failure};
}

// --- The way back

void Confirmation::run() {
  MutexLock lock(mutex_);
  while (!stopping_) {
    if (phase_ != Phase::Waiting) {
      changed_.wait(mutex_);
    } else if (Clock::now() < end_) {
      changed_.waitUntil(mutex_, end_);
    } else {
      phase_ = Phase::GoingBack;
      const auto changes = waiting_;
      lock.unlock();
      takeBack(changes);
      lock.lock();
    }
  }
}

/// Everything that it can; the rest waits for the next time.
void Confirmation::takeBack(const std::shared_ptr<const Unconfirmed>& changes) {
  std::string problem;
  try {
    problem = tryToTakeBack(*changes);
  } catch (const std::exception& error) {
    problem = error.what();
  }
  if (problem.empty()) return becomeIdle();
  const MutexLock lock(mutex_);
  if (problem != problem_) {
    log(Level::Error, "changes that were not confirmed cannot go back", {{"reason", problem}});
  }
  problem_ = std::move(problem);
  phase_ = Phase::Waiting;
  waiting_ = changes;
  end_ = Clock::now() + RETRY_PAUSE;
  changed_.notifyAll();
}

/// Returns why not, in words; empty if it has.
std::string Confirmation::tryToTakeBack(const Unconfirmed& changes) {
  const auto before = inspection::settingsIn(changes.before);
  const auto after = inspection::settingsIn(changes.after);
  if (std::string problem = takeBackInMemory(*before, *after); !problem.empty()) return problem;
  if (isOnDisk(changes)) {
    BridgeSession self(::geteuid(), ::getegid(), ::getpid(), {}, Author::self().program);
    const Reply saved = CommandService::save(self, false, NOT_CONFIRMED);
    if (saved.result == 0) return "they have gone back in memory, but not in a file: " + saved.text;
  }
  removeFile(path());
  return {};
}

std::string Confirmation::takeBackInMemory(Catalogue& before, Catalogue& after) {
  BridgeSession self(::geteuid(), ::getegid(), ::getpid(), {}, Author::self().program);
  const MutexLock turn(service_.writeTurn());
  Catalogue wanted;
  copyAll(settings_, wanted);
  const std::vector<std::string> stays = goBack(before, after, wanted);
  const auto groups = groupsThatDiffer(settings_, wanted);
  if (!groups.empty()) {
    log(Level::Warning, NOT_CONFIRMED);
    const Reply reply = writer_.write(self, groups);
    if (reply.result == 0) return reply.text;
  }
  if (!stays.empty()) {
    log(Level::Warning, "changes were not confirmed, and stay because they were changed again",
        {{"parameters", joined(stays)}});
  }
  return {};
}

/// Whether anything would go back in settings that nobody else uses. They have gone back then.
bool Confirmation::holds(Catalogue& settings, const Unconfirmed& changes) const {
  Catalogue former;
  copyAll(settings, former);
  (void)goBack(*inspection::settingsIn(changes.before), *inspection::settingsIn(changes.after),
               settings);
  return !editing::changesBetween(former, settings).empty();
}

bool Confirmation::isOnDisk(const Unconfirmed& changes) {
  const auto texts = keeper_.textsOnDisk();
  return std::ranges::any_of(texts, [&](const std::string& text) {
    return holds(*inspection::settingsIn(text), changes);
  });
}

void Confirmation::resume() {
  std::shared_ptr<Unconfirmed> found;
  std::string damage;
  try {
    auto file = readFile(path(), MAX_UNCONFIRMED_SIZE);
    if (!file) return;
    found = std::make_shared<Unconfirmed>(decodeUnconfirmed(std::move(*file)));
  } catch (const std::exception& error) {
    damage = error.what();
  }
  if (!found) {
    log(Level::Error, "changes that were not confirmed cannot go back",
        {{"file", path()}, {"reason", damage}});
    const MutexLock lock(mutex_);
    problem_ = path() + ": " + damage;
    return;
  }
  const auto most = milliseconds(seconds(found->seconds));
  const auto left = std::clamp(milliseconds(found->until - systemTime()), milliseconds(0), most);
  Catalogue present;
  copyAll(settings_, present);
  const bool waits = left > milliseconds(0) && (holds(present, *found) || isOnDisk(*found));
  if (waits) {
    log(Level::Notice, "changes wait for confirmation", {{"until", utcText(found->until)}});
    return wait(found, left);
  }
  {
    const MutexLock lock(mutex_);
    phase_ = Phase::GoingBack;
    waiting_ = found;
  }
  takeBack(found);
}

}  // namespace agent
