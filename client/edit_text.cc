#include "client/edit_text.h"

#include <algorithm>
#include <set>

#include "client/setting_lines.h"
#include "lparams/values/values.h"
#include "text/escape.h"

namespace client {
namespace {

using documents::Mistake;

constexpr const char* HEAD =
    "# Change values and leave the editor; you are asked before anything is written. A line that\n"
    "# is not there leaves its value as it is, and so does \"(hidden)\". A new user is one who is\n"
    "# named: USERS[NAME].PARAMETER=VALUE. Lines that begin with \"#\" are left out.\n";

constexpr std::string_view REMARK = "#! ";

std::string commentOn(const bridge::NamedValue& value, const CatalogueView::Json& param) {
  std::string comment = "\n# ";
  const auto meaning = param.at("meaning").get<std::string>();
  if (!meaning.empty()) comment += meaning + "; ";
  comment += legalValues(param);
  if (!value.secret && value.byDefault && !value.byDefault->empty()) {
    comment += "; default " + text::escaped(*value.byDefault);
  }
  return comment + "\n";
}

/// Takes the first line off the front, with its end.
std::string_view takeLine(std::string_view& text) {
  const size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end);
  return line;
}

}  // namespace

std::string editableText(const bridge::NamedValues& values, const CatalogueView& catalogue,
                         bool secrets) {
  std::string text = HEAD;
  std::set<const CatalogueView::Json*> commented;
  for (const bridge::NamedValue& value : values.values) {
    if (!value.running && !value.secret) continue;  // of a user who was removed
    const NamePieces pieces = takeApart(value.name);
    // A user's name is in the name of each line.
    if (pieces.group == documents::USERS && pieces.member == "NAME") continue;
    const auto* const param = catalogue.find(value.name);
    if (param != nullptr && commented.insert(param).second) text += commentOn(value, *param);
    text += settingLine(value, secrets);
  }
  return text;
}

std::string withRemarks(std::string_view text, const std::vector<Mistake>& mistakes) {
  const auto addAll = [&](std::string& to, size_t line) {
    for (const Mistake& mistake : mistakes) {
      if (mistake.place.line == line) to.append(REMARK).append(mistake.text).append("\n");
    }
  };
  std::string marked;
  addAll(marked, 0);
  for (size_t line = 1; !text.empty(); ++line) {
    addAll(marked, line);
    marked += takeLine(text);
  }
  return marked;
}

std::string withoutRemarks(std::string_view text) {
  std::string kept;
  while (!text.empty()) {
    const std::string_view line = takeLine(text);
    if (!line.starts_with(REMARK)) kept += line;
  }
  return kept;
}

}  // namespace client
