// A table of parameters.
#include <algorithm>
#include <array>
#include <iostream>
#include <map>

#include "client/glob.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::NamedValue;

/// A line of the table.
struct Row {
  std::array<std::string, 4> cells;
  const std::string& legal;  // long, and the same for every user
};

constexpr const char* LIST_NOTES =
    R"~(Prints name, value, default, saved value and legal values. A glob is for the full name, for
the name without its group, or for the group, in any case: "*" stands for any text and "?" for
any character. Secrets are hidden. With --json the values are one document, with numbers as
numbers, flags as true and false, and null for a secret that you may not see.

Examples:
  lparamsctl list '*TIMEOUT*'
  lparamsctl list ike --changed
  lparamsctl list --unsaved
  lparamsctl list --json)~";

struct ListGiven {
  std::string glob;       // with "*" and "?", in any case; all if empty
  bool changed = false;   // only what is not at its default
  bool unsaved = false;   // only what is not as saved
  bool fileOnly = false;  // only what the records of the bridge do not carry
  bool json = false;
};

bool isListed(const NamedValue& value, const ListGiven& filter, const CatalogueView& catalogue) {
  if (!value.running && !value.secret) return false;  // of a user who was removed
  if (filter.changed && value.running == value.byDefault) return false;
  if (filter.unsaved && value.running == value.saved) return false;
  if (filter.fileOnly) {
    const auto* const param = catalogue.find(value.name);
    if (param == nullptr || param->at("where") != "file") return false;
  }
  return filter.glob.empty() || matchesName(filter.glob, value.name);
}

constexpr size_t PRINTED_AT_ONCE = 16 * 1024;  // bytes

/// Characters, as far as UTF-8 tells them apart.
size_t widthOf(const std::string& cell) {
  return static_cast<size_t>(
      std::ranges::count_if(cell, [](char c) { return (c & 0xC0) != 0x80; }));
}

void print(const std::vector<Row>& rows) {
  std::array<size_t, 4> widths{};
  for (const Row& row : rows) {
    for (size_t i = 0; i < widths.size(); ++i)
      widths[i] = std::max(widths[i], widthOf(row.cells[i]));
  }
  std::string lines;
  for (const Row& row : rows) {
    for (size_t i = 0; i < widths.size(); ++i) {
      lines += row.cells[i];
      lines.append(widths[i] - widthOf(row.cells[i]) + 2, ' ');
    }
    lines += row.legal;
    lines += '\n';
    if (lines.size() < PRINTED_AT_ONCE) continue;
    std::cout << lines;
    lines.clear();
  }
  std::cout << lines;
}

void list(Context& context, const ListGiven& given) {
  Store& store = context.store();
  const CatalogueView catalogue(store.schema());
  bridge::NamedValues found = store.get({});
  std::erase_if(found.values,
                [&](const NamedValue& value) { return !isListed(value, given, catalogue); });
  if (given.json) {
    std::cout << printedJson(documentOf(found, catalogue));
    return;
  }
  std::map<const CatalogueView::Json*, std::string> legal;
  const std::string legalHead = "LEGAL";
  std::vector<Row> rows;
  rows.reserve(found.values.size() + 1);
  rows.push_back({{"NAME", "VALUE", "DEFAULT", "SAVED"}, legalHead});
  for (const NamedValue& value : found.values) {
    const auto* const param = catalogue.find(value.name);
    const auto [words, isNew] = legal.try_emplace(param);
    if (isNew && param != nullptr) words->second = legalValues(*param);
    rows.push_back({{text::escaped(value.name), shownValue(value, value.running),
                     shownValue(value, value.byDefault), shownValue(value, value.saved)},
                    words->second});
  }
  if (rows.size() > 1) print(rows);
}

}  // namespace

void addList(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "list", "Print parameters beside what they could be", LIST_NOTES, list);
  command.add_option("GLOB", given->glob, "Names, with * and ?; all if it is left out");
  command.add_flag("--changed", given->changed, "Only what is not at its default");
  command.add_flag("--unsaved", given->unsaved, "Only what is not as saved");
  command.add_flag("--file-only", given->fileOnly, "Only what records of the bridge do not carry");
  addJson(command, given->json);
}

}  // namespace client
