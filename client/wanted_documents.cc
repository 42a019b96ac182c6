#include "client/wanted_documents.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace client {

Wanted WantedDocuments::wanted(const bridge::NamedValues& now) const {
  Wanted all;
  std::map<std::string, size_t> places;  // in all.values, by name
  std::set<std::string> users;
  for (const WantedDocument& document : documents_) {
    Wanted one = document.wanted(now);
    for (std::string& user : one.users) {
      if (users.insert(user).second) all.users.push_back(std::move(user));
    }
    for (auto& [name, value] : one.values) {
      const auto [place, isNew] = places.emplace(name, all.values.size());
      if (isNew) {
        all.values.emplace_back(name, std::move(value));
      } else {
        all.values[place->second].second = std::move(value);
      }
    }
  }
  return all;
}

Failure WantedDocuments::failure(std::string_view refusal) const {
  if (documents_.size() == 1) return documents_.front().failure(refusal);
  std::vector<std::string> refusals(documents_.size());
  std::string rest;  // what nobody names
  while (!refusal.empty()) {
    const size_t end = std::min(refusal.find('\n'), refusal.size());
    const std::string line(refusal.substr(0, end));
    size_t at = documents_.size();
    while (at > 0 && !documents_[at - 1].isAbout(line)) --at;
    (at > 0 ? refusals[at - 1] : rest) += line + "\n";
    refusal.remove_prefix(std::min(end + 1, refusal.size()));
  }
  std::string mistakes;
  for (size_t at = 0; at < documents_.size(); ++at) {
    if (!refusals[at].empty()) mistakes += documents_[at].told(refusals[at]);
  }
  return nothingWritten(mistakes + rest);
}

}  // namespace client
