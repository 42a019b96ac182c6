// A document that is in no file.
#pragma once

#include <memory>

#include "markup/tree.h"
#include "platform/markup_document.h"

namespace markup {

/// A document from a tree, for whoever reads documents through the platform's interface.
class TextDocument final : public MLDoc {
 public:
  explicit TextDocument(std::unique_ptr<Tree> tree);
};

}  // namespace markup
