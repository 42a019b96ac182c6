// The catalogue of an agent, as its schema tells it.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace client {

/// Knows the parameters by the agent's schema: the agent may have another catalogue than this
/// program.
class CatalogueView {
 public:
  using Json = nlohmann::ordered_json;

  /// Throws Failure if the text is no schema.
  explicit CatalogueView(const std::string& schema);

  /// What the schema says of the parameter, whichever user it is of; null if it says nothing.
  const Json* find(std::string_view fullName) const;

  /// The full names of the parameters, those of users as "USERS.NAME", in order.
  const std::vector<std::string>& names() const { return names_; }

 private:
  Json schema_;
  std::vector<std::string> names_;
  std::map<std::string, const Json*, std::less<>> params_;  // by full name
};

/// The parameter's legal values, in words.
std::string legalValues(const CatalogueView::Json& param);

/// The value as JSON: numbers as numbers, flags as true and false, all else as texts.
CatalogueView::Json typedValue(const CatalogueView::Json& param, const std::string& value);

/// A full name taken apart: "USERS[bob].NAME" is of "USERS", "bob" and "NAME".
struct NamePieces {
  std::string group;
  std::string user;  ///< empty where there is none
  std::string member;
};
NamePieces takeApart(std::string_view fullName);

}  // namespace client
