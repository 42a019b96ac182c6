#include "lparams/params/text_writer.h"

#include <algorithm>
#include <ostream>

#include "lparams/params/block_grammar.h"

namespace LPARAMS::Server {

void putPieces(std::ostream& os, int indent, std::initializer_list<std::string_view> pieces) {
  const size_t blanks = indent > 0 ? static_cast<size_t>(indent) * LEVEL.size() : 0;
  size_t size = blanks;
  for (const std::string_view piece : pieces) size += piece.size();

  // Handed over as a whole: a call of the stream for each piece costs as much as the rest of it.
  char small[256];
  std::string large;
  if (size > sizeof small) large.resize(size);
  char* const begin = large.empty() ? small : large.data();
  char* at = std::fill_n(begin, blanks, ' ');
  for (const std::string_view piece : pieces) at += piece.copy(at, piece.size());
  os.write(begin, static_cast<std::streamsize>(size));
}

}  // namespace LPARAMS::Server
