// How often modules have used the markup parser.
#pragma once

namespace agent {

/// Number of documents that have been read to their end, well formed or not.
int markupDocumentsRead();

}  // namespace agent
