#include <algorithm>
#include <array>
#include <ostream>

#include "client/commands.h"
#include "client/values.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::NamedValue;
using Row = std::array<std::string, 5>;

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

/// "*" is any text and "?" any character; brackets are no more than that, since names have them.
bool matches(std::string_view glob, std::string_view text) {
  size_t at = 0;
  size_t in = 0;
  size_t star = std::string_view::npos;
  size_t resume = 0;
  while (in < text.size()) {
    if (at < glob.size() && glob[at] == '*') {
      star = at++;
      resume = in;
    } else if (at < glob.size() && (glob[at] == '?' || lower(glob[at]) == lower(text[in]))) {
      ++at;
      ++in;
    } else if (star != std::string_view::npos) {
      at = star + 1;
      in = ++resume;
    } else {
      return false;
    }
  }
  while (at < glob.size() && glob[at] == '*') ++at;
  return at == glob.size();
}

bool isListed(const NamedValue& value, const ListFilter& filter, const CatalogueView& catalogue) {
  if (!value.running && !value.secret) return false;  // of a user who was removed
  if (filter.changed && value.running == value.byDefault) return false;
  if (filter.unsaved && value.running == value.saved) return false;
  const auto* const param = catalogue.find(value.name);
  if (filter.fileOnly && (param == nullptr || param->at("where") != "file")) return false;
  if (filter.glob.empty()) return true;
  const std::string_view name = value.name;
  const size_t dot = name.rfind('.');
  return matches(filter.glob, name) || matches(filter.glob, name.substr(dot + 1)) ||
         matches(filter.glob, name.substr(0, dot));
}

/// Characters, as far as UTF-8 tells them apart.
size_t widthOf(const std::string& cell) {
  return static_cast<size_t>(
      std::ranges::count_if(cell, [](char c) { return (c & 0xC0) != 0x80; }));
}

void print(std::ostream& out, const std::vector<Row>& rows) {
  std::array<size_t, std::tuple_size_v<Row>> widths{};
  for (const Row& row : rows) {
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], widthOf(row[i]));
  }
  for (const Row& row : rows) {
    for (size_t i = 0; i + 1 < row.size(); ++i) {
      out << row[i] << std::string(widths[i] - widthOf(row[i]) + 2, ' ');
    }
    out << row.back() << '\n';
  }
}

}  // namespace

void list(Store& store, std::ostream& out, const ListFilter& filter, bool json) {
  const CatalogueView catalogue(store.schema());
  bridge::NamedValues found = store.get({});
  std::erase_if(found.values,
                [&](const NamedValue& value) { return !isListed(value, filter, catalogue); });
  if (json) {
    out << printedJson(documentOf(found, catalogue));
    return;
  }
  std::vector<Row> rows = {{"NAME", "VALUE", "DEFAULT", "SAVED", "LEGAL"}};
  for (const NamedValue& value : found.values) {
    const auto* const param = catalogue.find(value.name);
    rows.push_back({text::escaped(value.name), shownValue(value, value.running),
                    shownValue(value, value.byDefault), shownValue(value, value.saved),
                    param == nullptr ? "" : legalValues(*param)});
  }
  if (rows.size() > 1) print(out, rows);
}

}  // namespace client
