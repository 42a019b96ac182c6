// What a document says, as lines.
#pragma once

#include <string>
#include <vector>

#include "documents/document.h"

namespace documents_testing {

inline std::string at(documents::Place place) {
  return std::to_string(place.line) + ":" + std::to_string(place.column) + " ";
}

/// "LINE:COLUMN NAME=VALUE" for each value, with the kind behind it unless it is a text.
inline std::vector<std::string> valuesIn(const documents::Document& document) {
  std::vector<std::string> lines;
  for (const documents::Value& value : document.values) {
    static const char* const KINDS[] = {"", " number", " flag", " kept"};
    lines.push_back(at(value.place) + value.name + "=" + value.text + KINDS[value.kind]);
  }
  return lines;
}

/// "LINE:COLUMN NAME" for each user.
inline std::vector<std::string> usersIn(const documents::Document& document) {
  std::vector<std::string> lines;
  for (const documents::User& user : document.users) lines.push_back(at(user.place) + user.name);
  return lines;
}

/// "LINE:COLUMN TEXT" for each mistake.
inline std::vector<std::string> mistakesIn(const documents::Document& document) {
  std::vector<std::string> lines;
  for (const documents::Mistake& mistake : document.mistakes) {
    lines.push_back(at(mistake.place) + mistake.text);
  }
  return lines;
}

}  // namespace documents_testing
