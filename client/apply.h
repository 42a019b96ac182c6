// Has an agent do what documents want.
#pragma once

#include <string>
#include <vector>

#include "client/agent_store.h"
#include "client/steps.h"
#include "client/wanted_documents.h"

namespace client {

struct ApplyOptions {
  bool exclusive = false;  ///< what the document does not name goes to its default, or is removed
  bool onlyUsers = false;  ///< users that the document does not name are removed
  std::vector<std::string> absentUsers = {};  ///< are removed
  bool exactOrder = false;                    ///< the users shall have the document's order
  bool check = false;                         ///< nothing is changed
  bool bytes = false;                         ///< new texts need not show what they are
  unsigned confirm = 0;  ///< seconds in which the change has to be confirmed; 0 if it need not be
  bool save = false;     ///< what has to be confirmed is saved until then
  std::string message = {};  ///< for the history of that save
};

/// Carries out all that the documents want together or nothing. What is so already is not written.
/// Returns what has been done, or what would be. Throws Failure with all mistakes of all documents,
/// also of values that a later one replaces.
Done apply(AgentStore& agent, const WantedDocuments& documents, const ApplyOptions& options);

/// Whether what was saved last is what the documents want.
bool isSaved(AgentStore& agent, const WantedDocuments& documents, const ApplyOptions& options);

}  // namespace client
