// Parts of a settings text, made fit to be shown: no secret among them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lparams/catalogue/catalogue.h"

namespace inspection {

/// What may be seen of a text that somebody has edited by hand. A secret may stand anywhere in it:
/// behind its name with something else than a "=" between the two, in the line of another
/// parameter, or in a line of its own.
class Shown {
 public:
  explicit Shown(const LPARAMS::Server::Catalogue& catalogue);

  /// The key, if it has the form of a name or is one that was mistyped. What else stands before a
  /// "=" may be a part of a value, and of a secret one.
  std::string name(std::string_view key) const;

  /// The beginning of a value of a parameter that is no secret.
  std::string value(std::string_view value) const;

  /// The beginning of what stands in the place of a number or a name, up to where a secret could
  /// begin: it may be the line of another parameter.
  std::string text(std::string_view text) const;

 private:
  size_t secretIn(std::string_view text) const;
  static std::string upTo(size_t end, std::string_view text);

  std::vector<std::string_view> names_;    // of groups and parameters
  std::vector<std::string_view> secrets_;  // of those that hold secrets
};

}  // namespace inspection
