// What has happened to an agent, for people and for programs.
#pragma once

#include <string>
#include <vector>

#include "bridge/notice.h"
#include "client/catalogue_view.h"

namespace client {

/// A notice as lines, each with its newline: one for each parameter that has changed, else one for
/// what has happened. With a glob, of names as matchesName() takes them, only what has such a name.
std::string linesOf(const bridge::Notice& notice, const std::string& glob);

/// The same as JSON objects, each in one line.
std::string jsonLinesOf(const bridge::Notice& notice, const std::string& glob,
                        const CatalogueView& catalogue);

}  // namespace client
