// A document that a client applies: what the check says of it, and what the agent's own check of
// changes makes of what the client reads in it.
#include <algorithm>

#include "checking/check.h"
#include "client/catalogue_view.h"
#include "client/steps.h"
#include "client/wanted_document.h"
#include "documents/document.h"
#include "editing/draft.h"
#include "editing/record_check.h"
#include "schema/schema.h"
#include "tests/prove/fuzz/settings_text.h"
#include "tests/prove/fuzz/target.h"

namespace fuzz {
namespace {

using namespace LPARAMS::Server;
using bridge::Change;
using documents::Document;

const client::CatalogueView& catalogue() {
  static const client::CatalogueView view(schema::ownSchema());
  return view;
}

/// The steps that lead there from the defaults, where there are no users.
std::vector<Change> stepsOf(const client::Wanted& wanted) {
  std::vector<Change> steps;
  for (const std::string& user : wanted.users) {
    const bool isNew = std::ranges::none_of(steps, [&](const Change& s) { return s.name == user; });
    if (isNew) steps.push_back({Change::AddUser, user, {}});
  }
  for (const auto& [name, value] : wanted.values) steps.push_back({Change::Set, name, value});
  return steps;
}

/// What the agent has against it; empty if nothing. What it takes survives a restart.
std::string refusalOf(const std::vector<Change>& steps) {
  Catalogue settings;
  const editing::RecordCheck check(settings, MAX_USERS);
  editing::Draft draft(settings, check, editing::Draft::WithUsers);
  for (const Change& step : steps) draft.apply(step);
  draft.finish();
  if (!draft.mistakes().empty()) return draft.mistakes().text();
  for (const Change& step : steps) {
    if (step.kind != Change::Set) continue;
    editing::Parameters parameters(draft.settings());
    const auto found = parameters.find(step.name);
    require(found.param != nullptr, "a value that was taken is not there");
  }
  Catalogue restarted;
  requireToSurvive(draft.settings(), restarted);
  return {};
}

}  // namespace

void tryOnce(std::string_view input) {
  checking::Checked checked = checking::check(input);
  const Document document = documents::read(input);
  const client::WantedDocument wanted("document", document, catalogue());
  if (checked.form != checking::Checked::Document || document.form == Document::SettingsFile)
    return;

  const std::string refusal = refusalOf(stepsOf(wanted.wanted({})));
  bool isRefused = wanted.hasMistakes() || !refusal.empty();
#ifdef PLANTED
  if (input.find("IKE_PORT=501") != input.npos) isRefused = !isRefused;
#endif
  const bool isRemarked = std::ranges::any_of(checked.remarks, [](const auto& remark) {
    return remark.severity == inspection::Severity::Error;
  });
  if (isRefused == isRemarked) return;
  std::string words =
      isRefused ? "refused, and the check says nothing: " + refusal : "taken, and the check says:";
  for (const auto& mistake : wanted.mistakes("")) words += "\n  " + mistake.text;
  for (const auto& remark : checked.remarks)
    words += "\n  " + remark.parameter + ": " + remark.message;
  found(words);
}

std::vector<std::string> seeds() {
  std::vector<std::string> documents;
  forEachSetting([&](Catalogue& settings, ParamGroup& group) {
    if (&group == settings.USERS) return;
    for (Param* param : group.fileParams) {
      if (documents.size() > 400 && documents.size() % 7 != 0) continue;
      const std::string value = valueText(*param);
      documents.push_back(std::string(group.name) + "." + param->name + "=" + value + "\n");
      documents.push_back("{\"" + std::string(group.name) + "\": {\"" + param->name + "\": \"" +
                          value + "\"}}");
    }
  });
  documents.emplace_back("# a comment\nUSERS[bob].PMP_TIMEOUT=20\nUSERS[al]\nIKE.IKE_PORT=500\n");
  documents.emplace_back(
      R"({"IKE": {"IKE_PORT": 500, "QCD_SECRET": null}, "USERS": {"bob": {"PMP_TIMEOUT": 20}}})");
  return documents;
}

}  // namespace fuzz
