// What an argument of the command line could be.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "client/catalogue_view.h"
#include "client/context.h"

namespace client {

/// What a shell is to put in the place of a word.
struct Offer {
  std::vector<std::string> words = {};  ///< those that do not show what they are are left out
  bool file = false;                    ///< the path of a file, behind `kept`, in place of words
  std::string kept = {};                ///< what the word begins with and keeps
};

/// Knows the settings of the agent, or of the file that the command line names; where they cannot
/// be had, what this program is built with, without users.
class Offers {
 public:
  explicit Offers(Context& context);

  /// For an argument of this kind, which is what the help calls it, such as "GROUP.NAME=VALUE";
  /// only what begins as `word` does. Throws std::logic_error if there is no such kind.
  Offer of(std::string_view kind, const std::string& word) const;

 private:
  Offer assignment(const std::string& word, bool ofUser) const;
  std::vector<std::string> parameters(const std::string& word) const;
  std::vector<std::string> groups() const;
  std::vector<std::string> usersInList() const;
  std::vector<std::string> fields() const;
  std::vector<std::string> revisions() const;

  Context& context_;
  std::vector<std::string> users_;
  CatalogueView catalogue_;
};

}  // namespace client
