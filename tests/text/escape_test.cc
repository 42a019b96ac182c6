#include "text/escape.h"

#include <gtest/gtest.h>

#include <string>

namespace text {
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
    {" ~", " ~", R"(" ~")"},
    {R"(say "\x0a")", R"(say "\x0a")", R"("say \"\\x0a\"")"},
    // control characters of ASCII
    {"a\nb\tc\rd", R"(a\x0ab\x09c\x0dd)", R"("a\x0ab\x09c\x0dd")"},
    {"\x1B[31mred", R"(\x1b[31mred)", R"("\x1b[31mred")"},
    {"\0\x1F\x7F"s, R"(\x00\x1f\x7f)", R"("\x00\x1f\x7f")"},
    // those beyond it, of which U+009B begins a command to a terminal, and their neighbours
    {"\xC2\x80\xC2\x9B\xC2\x9F", R"(\xc2\x80\xc2\x9b\xc2\x9f)", R"("\xc2\x80\xc2\x9b\xc2\x9f")"},
    {"\xC2\xA0\xC3\x9B", "\xC2\xA0\xC3\x9B", "\"\xC2\xA0\xC3\x9B\""},
    // ends of a line and a paragraph, and their neighbours
    {"\xE2\x80\xA7\xE2\x80\xA8\xE2\x80\xA9\xE2\x80\xAF",
     "\xE2\x80\xA7\\xe2\\x80\\xa8\\xe2\\x80\\xa9\xE2\x80\xAF",
     "\"\xE2\x80\xA7\\xe2\\x80\\xa8\\xe2\\x80\\xa9\xE2\x80\xAF\""},
    // what turns the direction around: marks, embeddings and overrides, isolates
    {"\xD8\x9C\xE2\x80\x8E\xE2\x80\x8F", R"(\xd8\x9c\xe2\x80\x8e\xe2\x80\x8f)",
     R"("\xd8\x9c\xe2\x80\x8e\xe2\x80\x8f")"},
    {"\xE2\x80\xAA\xE2\x80\xAE", R"(\xe2\x80\xaa\xe2\x80\xae)", R"("\xe2\x80\xaa\xe2\x80\xae")"},
    {"\xE2\x81\xA6\xE2\x81\xA9", R"(\xe2\x81\xa6\xe2\x81\xa9)", R"("\xe2\x81\xa6\xe2\x81\xa9")"},
    // characters of two, three and four bytes
    {"d\xC3\xA9j\xC3\xA0 \xD0\xB9", "d\xC3\xA9j\xC3\xA0 \xD0\xB9",
     "\"d\xC3\xA9j\xC3\xA0 \xD0\xB9\""},
    {"\xE2\x82\xAC\xF0\x9F\x94\x91", "\xE2\x82\xAC\xF0\x9F\x94\x91",
     "\"\xE2\x82\xAC\xF0\x9F\x94\x91\""},
    // not UTF-8: a byte that begins nothing, a cut character, one spelt too long, a surrogate, one
    // beyond the last; what is behind stays
    {"\x80\x9B\xFF!", R"(\x80\x9b\xff!)", R"("\x80\x9b\xff!")"},
    {"\xC3", R"(\xc3)", R"("\xc3")"},
    {"\xE2\x82 \xC3\xA9", "\\xe2\\x82 \xC3\xA9", "\"\\xe2\\x82 \xC3\xA9\""},
    {"\xC0\x8A", R"(\xc0\x8a)", R"("\xc0\x8a")"},
    {"\xED\xA0\x80", R"(\xed\xa0\x80)", R"("\xed\xa0\x80")"},
    {"\xF4\x90\x80\x80", R"(\xf4\x90\x80\x80)", R"("\xf4\x90\x80\x80")"},
    {"\xC3\n\xA9", R"(\xc3\x0a\xa9)", R"("\xc3\x0a\xa9")"},
};

TEST(Escape, ShowsControlCharactersAndForeignBytesAsNumbers) {
  for (const Row& row : ROWS) EXPECT_EQ(escaped(row.text), row.escaped);
}

TEST(Escape, QuotesAsWell) {
  for (const Row& row : ROWS) EXPECT_EQ(inQuotes(row.text), row.inQuotes);
}

TEST(Escape, NoByteOfAsciiThatIsNoControlCharacterIsChanged) {
  for (char c = ' '; c <= '~'; ++c) EXPECT_EQ(escaped({&c, 1}), std::string(1, c));
}

TEST(Escape, KnowsWhatIsUtf8) {
  EXPECT_TRUE(isUtf8(""));
  EXPECT_TRUE(isUtf8("a\n\xC3\xA9"));
  for (const char* text : {"\x80", "a\xC3", "\xED\xA0\x80"}) EXPECT_FALSE(isUtf8(text));
}

}  // namespace
}  // namespace text
