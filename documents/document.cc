#include "documents/document.h"

#include <utility>

#include "documents/json_reader.h"
#include "documents/lines_reader.h"
#include "documents/settings_reader.h"
#include "inspection/settings_completeness.h"
#include "lparams/params/block_grammar.h"

namespace documents {

namespace {

Document readForm(std::string_view text, size_t keptMistakes) {
  Document refused(Document::Lines);
  if (text.size() > MAX_SIZE) {
    refused.addMistake({}, "the document is larger than 16 MiB");
    return refused;
  }
  const std::string_view body =
      LPARAMS::Server::withoutIndent(inspection::withoutByteOrderMark(text));
  if (body.empty()) {
    refused.addMistake({}, "the document is empty");
    return refused;
  }
  if (body.front() == '{') return readJson(text, keptMistakes);
  if (body.front() == LPARAMS::Server::BLOCK_MARK) return readSettingsFile(text, keptMistakes);
  return readLines(text, keptMistakes);
}

}  // namespace

void Document::addMistake(Place place, std::string text) {
  if (++mistakeCount <= kept) mistakes.push_back({place, std::move(text)});
}

Document read(std::string_view text, size_t keptMistakes) {
  Document document = readForm(text, keptMistakes);
  for (const User& user : document.users) {
    if (user.name.empty()) document.addMistake(user.place, "USERS: a user needs a name");
  }
  return document;
}

std::string userParameter(std::string_view user, std::string_view member) {
  return std::string("USERS[").append(user).append("].").append(member);
}

}  // namespace documents
