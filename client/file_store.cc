#include "client/file_store.h"

#include <optional>
#include <utility>

#include "client/directory_lock.h"
#include "client/failure.h"
#include "client/user_file.h"
#include "editing/copy_group.h"
#include "editing/draft.h"
#include "editing/named_reader.h"
#include "editing/record_check.h"
#include "inspection/inspection.h"
#include "inspection/settings_completeness.h"
#include "inspection/settings_text.h"
#include "schema/schema.h"
#include "text/escape.h"

namespace client {
namespace {

using namespace LPARAMS::Server;

constexpr const char* WITHOUT_FILE = "leave out --file to reach its settings";

/// Changes that are legal; throws Failure with all that is wrong with them.
struct Trial {
  Trial(Catalogue& settings, const bridge::NamedChanges& changes)
      : check(settings, MAX_USERS), draft(settings, check, editing::Draft::WithUsers) {
    for (const bridge::Change& change : changes.changes) draft.apply(change);
    draft.finish();
    if (!draft.mistakes().empty()) throw Failure(programs::EXIT_ILLEGAL, draft.mistakes().text());
  }

  const editing::RecordCheck check;
  editing::Draft draft;
};

}  // namespace

FileStore::FileStore(std::string path, Use use)
    : path_(std::move(path)), settings_(std::make_shared<Catalogue>()) {
  text_ = readUserFile(path_, inspection::MAX_SETTINGS_SIZE);
  std::optional<DirectoryLock> whileReading;
  if (use == InPlaceOfAgent) whileReading.emplace(path_, DirectoryLock::Shared, WITHOUT_FILE);
  inspection::Inspection found = inspection::inspect(text_, *settings_);
  if (!found.incomplete.empty()) {
    throw Failure(programs::EXIT_BAD_FILE,
                  text::escaped(path_) + " is no settings file: " + found.incomplete);
  }
  findings_ = std::move(found.findings);
}

bridge::NamedValues FileStore::get(const bridge::Names& names) {
  editing::NamedReader reader(*settings_, settings_, true);
  bridge::NamedValues values{.values = reader.read(names)};
  if (!reader.mistakes().empty()) {
    throw Failure(programs::EXIT_ILLEGAL, reader.mistakes().text());
  }
  return values;
}

bridge::NamedValues FileStore::set(const bridge::NamedChanges& changes) {
  Trial trial(*settings_, changes);
  const auto changed = trial.draft.changedGroups();
  if (!changed.empty() && findings_.count > 0) {
    throw Failure(programs::EXIT_BAD_FILE,
                  text::escaped(path_) +
                      " holds what a load does not take as it stands, and what "
                      "would be lost: see \"lparamsctl check\"; nothing was "
                      "written");
  }
  for (ParamGroup* group : changed)
    editing::copyGroup(*group, editing::counterpart(*settings_, *group));
  if (!changed.empty()) {
    const DirectoryLock lock(path_, DirectoryLock::Alone, WITHOUT_FILE);
    if (readUserFile(path_, inspection::MAX_SETTINGS_SIZE) != text_) {
      throw Failure(programs::EXIT_TRY_AGAIN,
                    text::escaped(path_) + " has been changed meanwhile; nothing was written");
    }
    text_ = inspection::textOf(*settings_);
    replaceUserFile(path_, text_);
  }
  return {.values = trial.draft.changedValues(settings_)};
}

bridge::NamedValues FileStore::tryOut(const bridge::NamedChanges& changes) {
  return {.values = Trial(*settings_, changes).draft.changedValues(settings_)};
}

void FileStore::save(const Saving& /*how*/) {}

std::string FileStore::schema() { return schema::ownSchema(); }

}  // namespace client
