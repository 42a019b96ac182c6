#include "documents/settings_reader.h"

#include <set>
#include <utility>

#include "inspection/inspection.h"
#include "inspection/remark.h"
#include "lparams/values/values.h"
#include "text/escape.h"

namespace documents {
namespace {

using namespace LPARAMS::Server;
using inspection::Finding;

/// What the text leaves out is not named, and which texts are legal and how many users there may be
/// is for the agent to say: what is so already may stay.
bool isMistake(const Finding& finding) {
  return finding.kind != Finding::MembersMissing && finding.kind != Finding::ControlCharacters &&
         finding.kind != Finding::LongText && finding.kind != Finding::NamelessUser &&
         finding.kind != Finding::TooManyUsers;
}

/// As a check of the file says it.
std::string inWords(const Finding& finding) {
  const inspection::Remark remark = inspection::remarkOf(finding);
  if (!remark.named || remark.parameter.empty()) return remark.message;
  return text::escaped(remark.parameter) + ": " + remark.message;
}

}  // namespace

Document readSettingsFile(std::string_view text, size_t keptMistakes) {
  Document document(Document::SettingsFile, keptMistakes);
  Catalogue settings;
  std::vector<inspection::Taken> taken;
  const inspection::Inspection found =
      inspection::inspect(text, settings, {.findings = keptMistakes}, &taken);
  for (const Finding& finding : found.findings.first) {
    if (isMistake(finding)) document.addMistake(finding.place, inWords(finding));
  }
  if (!found.incomplete.empty()) {
    document.addMistake({}, "this is no whole settings file: " + found.incomplete);
  }
  for (const auto& [owner, param, place] : taken) {
    const bool isUser = owner->name == std::string_view(USER_t::GROUP_NAME);
    const std::string user = isUser ? static_cast<USER_t*>(owner)->NAME.value : "";
    if (param == nullptr) {
      document.users.push_back({user, place});
      continue;
    }
    std::string name = isUser ? userParameter(user, param->name)
                              : std::string(owner->name).append(".").append(param->name);
    document.values.push_back({std::move(name), valueText(*param), place});
  }
  return document;
}

}  // namespace documents
