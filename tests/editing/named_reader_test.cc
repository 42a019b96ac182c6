// How much a reader reads before it gives up.
#include "editing/named_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "bridge/protocol.h"

namespace editing {
namespace {

/// The bytes of its values in a reply.
size_t sizeOf(const std::vector<bridge::NamedValue>& values) {
  std::string bytes;
  for (const bridge::NamedValue& value : values) put(bytes, value);
  return bytes.size();
}

TEST(NamedReader, ReadsAsMuchAsAReplyHolds) {
  LPARAMS::Server::Catalogue settings;
  const std::string name = "UPDATE.PATH";
  const auto read = [&](bridge::Names names) {
    NamedReader reader(settings, nullptr, true);
    const size_t size = sizeOf(reader.read(names));
    return std::pair(size, reader.isTooLarge());
  };
  const size_t limit = 16'777'216 - 65'536;
  const size_t besides = read({name}).first;
  settings.UPDATE->PATH.value = std::string(limit / 2 - besides, 'x');
  EXPECT_EQ(read({name, name}), std::pair(limit, false));
  settings.UPDATE->PATH.value += "x";
  EXPECT_EQ(read({name, name}), std::pair(limit + 2, true));
  EXPECT_EQ(read({name, name, name}), std::pair(limit + 2, true)) << "it has given up";
}

}  // namespace
}  // namespace editing
