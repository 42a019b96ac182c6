#include "agent/state/settings_review.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "inspection/differences.h"
#include "inspection/inspection.h"
#include "inspection/settings_text.h"

namespace agent {
namespace {

using inspection::Finding;
using inspection::Findings;
using LPARAMS::Server::Catalogue;

constexpr size_t MAX_LINES = 40;  // of the log, for one text
constexpr size_t MAX_NAMES = 5;

bool isSame(const Finding& a, const Finding& b) {
  return a.kind == b.kind && a.path == b.path && a.given == b.given && a.taken == b.taken;
}

void logFinding(Level level, const Finding& finding) {
  const auto values = fieldsOf(finding);  // a Field refers to them
  std::vector<Field> fields;
  fields.reserve(values.size());
  for (const auto& [name, value] : values) fields.emplace_back(name, value);
  log(level, inWords(finding.kind), fields);
}

}  // namespace

Findings reviewText(const std::string& text, size_t maxUsers) {
  Catalogue loaded;
  return inspection::inspect(text, loaded, {.users = maxUsers}).findings;
}

Findings reviewReread(LPARAMS::Server::Server_t& settings, const std::string& text,
                      size_t maxUsers) {
  Catalogue loaded;
  Findings inText = inspection::inspect(text, loaded, {.users = maxUsers}).findings;
  if (inspection::textOf(loaded) == text) return inText;
  Findings findings;
  addDifferences(settings, loaded, Finding::NotReadBack, findings);
  append(findings, std::move(inText));
  return findings;
}

Findings reviewEdit(const std::string& before, LPARAMS::Server::Server_t& settings) {
  Catalogue former;
  (void)inspection::inspect(before, former);
  Findings findings;
  addDifferences(former, settings, Finding::Edited, findings);
  return findings;
}

std::string namesNotReadBack(const Findings& findings) {
  std::string names;
  size_t count = 0;
  for (const Finding& finding : findings.first) {
    if (finding.kind != Finding::NotReadBack) continue;
    if (++count > MAX_NAMES) return names + ", ...";
    names += (count > 1 ? ", " : "") + finding.path;
  }
  return names;
}

void append(Findings& findings, Findings more) {
  for (Finding& finding : more.first) findings.first.push_back(std::move(finding));
  findings.first.resize(std::min(findings.first.size(), Findings::KEPT));
  findings.count += more.count;
  findings.reported += more.reported;
}

void logFindings(Level level, const Findings& findings, const Findings& known) {
  size_t told = 0;
  size_t unknown = findings.count;
  for (const Finding& finding : findings.first) {
    if (std::ranges::any_of(known.first, [&](const Finding& k) { return isSame(k, finding); })) {
      --unknown;
    } else if (told < MAX_LINES) {
      ++told;
      logFinding(level, finding);
    }
  }
  if (told == 0 || unknown == told) return;
  log(level, "more was found than is told one by one",
      {{"more", static_cast<long long>(unknown - told)},
       {"of", static_cast<long long>(findings.count)}});
}

}  // namespace agent
