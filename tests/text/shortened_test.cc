#include "text/shortened.h"

#include <gtest/gtest.h>

namespace text {
namespace {

TEST(Quoted, EscapesForeignTexts) {
  EXPECT_EQ(quoted(""), R"("")");
  EXPECT_EQ(quoted("say \"no\""), R"("say \"no\"")");
  EXPECT_EQ(quoted("a\nb\xFF"), R"("a\x0ab\xff")");
}

TEST(Shortened, ShowsTheBeginningOfAForeignText) {
  EXPECT_EQ(shortened("xy", 2), "xy");
  EXPECT_EQ(shortened("xyz", 2), "xy...");
  EXPECT_EQ(shortened(std::string(200, 'x')), std::string(200, 'x'));
  EXPECT_EQ(shortened(std::string(201, 'x')), std::string(200, 'x') + "...");
}

TEST(Quoted, ShowsTheFirstTwoHundredBytes) {
  EXPECT_EQ(text::quoted(std::string(200, 'x')), '"' + std::string(200, 'x') + '"');
  EXPECT_EQ(text::quoted(std::string(201, 'x')), '"' + std::string(200, 'x') + "...\"");
  EXPECT_EQ(text::quoted(std::string(1'000'000, 'x')).size(), 205U);
}

}  // namespace
}  // namespace text
