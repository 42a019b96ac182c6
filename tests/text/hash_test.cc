#include "text/hash.h"

#include <gtest/gtest.h>

namespace text {
namespace {

TEST(Hash, IsXxh3Of128Bits) {
  EXPECT_EQ(hashOf(""), "99aa06d3014798d86001c324468d497f");
  EXPECT_EQ(hashOf("abc"), "06b05ab6733a618578af5f94892f3950");
}

TEST(Hash, TakesEveryByte) {
  EXPECT_NE(hashOf(std::string_view("a\0b", 3)), hashOf(std::string_view("a\0c", 3)));
}

}  // namespace
}  // namespace text
