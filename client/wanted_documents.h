// What several documents want of the settings.
#pragma once

#include <string_view>
#include <vector>

#include "client/wanted_document.h"

namespace client {

/// Documents that are taken one after the other, as one: of the values that several give to a
/// parameter the last one holds.
class WantedDocuments {
 public:
  explicit WantedDocuments(std::vector<WantedDocument> documents)
      : documents_(std::move(documents)) {}

  const std::vector<WantedDocument>& each() const { return documents_; }

  /// See WantedDocument::wanted().
  Wanted wanted(const bridge::NamedValues& now) const;

  /// What the agent has refused of them together: `refusal` has a line for each mistake. It is the
  /// mistake of the last document that names it.
  Failure failure(std::string_view refusal) const;

 private:
  const std::vector<WantedDocument> documents_;
};

}  // namespace client
