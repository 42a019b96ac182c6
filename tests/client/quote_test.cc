#include "client/quote.h"

#include <gtest/gtest.h>

#include <string>

namespace client {
namespace {

using namespace std::string_literals;

struct Row {
  std::string text;
  std::string escaped;
  std::string inQuotes;
};

const Row ROWS[] = {
    {"", "", R"("")"},
    {"one two", "one two", R"("one two")"},
    {"a\nb", R"(a\x0ab)", R"("a\x0ab")"},
    {"\x1b[31m", R"(\x1b[31m)", R"("\x1b[31m")"},
    {"\0\t\x1f\x7f"s, R"(\x00\x09\x1f\x7f)", R"("\x00\x09\x1f\x7f")"},
    {R"(say "\x0a")", R"(say "\x0a")", R"("say \"\\x0a\"")"},
    {"\xd0\xb9\x80", "\xd0\xb9\x80", "\"\xd0\xb9\x80\""},
};

TEST(ClientQuote, EscapesWhatIsNotPlainText) {
  for (const Row& row : ROWS) {
    EXPECT_EQ(escaped(row.text), row.escaped);
    EXPECT_EQ(inQuotes(row.text), row.inQuotes);
  }
}

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
