// A markup document from a text.
#pragma once

#include <string>
#include <string_view>

#include "platform/markup_document.h"
#include "tests/module/temp_directory.h"

namespace markup_testing {

inline ChPair chars(std::string_view text) { return {text.data(), text.data() + text.size()}; }

inline std::string str(const ChPair& text) {
  return text.begin == nullptr ? "" : std::string(text.begin, text.end);
}

/// A file with that text, for MLDoc::load.
class DocumentFile {
 public:
  explicit DocumentFile(const std::string& text) { host::writeFile(path, text); }

 private:
  const host::TempDirectory directory_;

 public:
  const std::string path = directory_.path + "document.xml";
};

/// What the parser throws at the text; empty if it takes it.
inline std::string errorOf(const std::string& text) {
  const DocumentFile file(text);
  MLDoc document;
  try {
    return document.load(file.path.c_str()) ? "" : "not read";
  } catch (const TTT& error) {
    return error.message();
  }
}

}  // namespace markup_testing
