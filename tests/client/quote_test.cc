#include "client/quote.h"

#include <gtest/gtest.h>

#include <string>

namespace client {
namespace {

using namespace std::string_literals;

TEST(ClientQuote, KnowsControlBytes) {
  EXPECT_FALSE(hasControlBytes(""));
  EXPECT_FALSE(hasControlBytes(" ~\x80\xff"));
  EXPECT_TRUE(hasControlBytes("a\n"));
  EXPECT_TRUE(hasControlBytes("\0"s));
  EXPECT_TRUE(hasControlBytes("\x1f"));
  EXPECT_TRUE(hasControlBytes("\x7f"));
}

}  // namespace
}  // namespace client
