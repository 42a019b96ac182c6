// Reading a block: its keys, its end, and what is passed over.
#pragma once

#include <iosfwd>
#include <string>

#include "lparams/params/block_grammar.h"
#include "lparams/params/text_reader.h"

namespace LPARAMS::Server {

/// Walks the keys of a block behind its head. The reader is used between two keys to take the
/// value that belongs to the first.
class BlockReader {
 public:
  /// REQUIRES: the stream outlives the reader.
  explicit BlockReader(std::istream& is) : is_(is), text_(is) {}

  /// Reads the next key that is not empty. Returns false at the end of the input. The key's name is
  /// valid until the stream is used again.
  bool next(Key& key) {
    std::string_view text;
    do {
      text = text_.upTo(KEY_MARK);
      if (text.empty() && text_.failed()) return false;
    } while (text.empty());
    key = keyOf(text);
    return true;
  }

  /// Consumes what ends the line of END_KEY: one character, whatever it is.
  void finishEnd() { is_.ignore(1); }

  /// Consumes the value of a key that nothing has the name of.
  void skipValue() { (void)text_.restOfLine(); }

  /// Consumes the block of an unknown group, inner blocks included, and reports each of its keys
  /// under the name of the block that it stands in. A file may nest as deep as it likes.
  void skipBlock(const std::string& name);

 private:
  std::istream& is_;
  TextReader text_;
};

/// Reports a key that nothing in the group has the name of.
void reportUnknown(const std::string& key, const std::string& group);

}  // namespace LPARAMS::Server
