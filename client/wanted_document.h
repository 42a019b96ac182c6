// What a document wants of the settings.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "client/catalogue_view.h"
#include "client/failure.h"
#include "client/steps.h"
#include "documents/document.h"

namespace client {

/// A document in the terms of an agent's catalogue: its values are spelt as the settings file does.
/// A secret that is "(hidden)" stays what it is, unless a settings file says so.
class WantedDocument {
 public:
  /// `name` is what messages call the document.
  WantedDocument(std::string name, documents::Document document, const CatalogueView& catalogue);

  /// Values that are to stay are those that there are `now`.
  Wanted wanted(const bridge::NamedValues& now) const;

  bool hasMistakes() const { return !mistakes_.empty(); }

  /// All that is wrong, in the order of the document, with what the agent has refused: `refusal`
  /// has a line for each mistake.
  std::vector<documents::Mistake> mistakes(std::string_view refusal) const;

  /// The same in lines that name the document and the place.
  std::string told(std::string_view refusal) const;

  /// The same as a failure.
  Failure failure(std::string_view refusal) const;

  /// Whether what the agent has refused is named here.
  bool isAbout(std::string_view mistake) const { return placeOf(mistake).line > 0; }

 private:
  void spell(documents::Value& value, const CatalogueView& catalogue);
  documents::Place placeOf(std::string_view mistake) const;

  const std::string name_;
  documents::Document document_;
  std::vector<documents::Mistake> mistakes_;
  std::map<std::string, documents::Place, std::less<>> places_;  // by shown name
};

}  // namespace client
