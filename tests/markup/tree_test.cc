// Documents as trees: what is found where in their text.
#include "markup/tree.h"

#include <gtest/gtest.h>

#include <string>

#include "markup/text_document.h"
#include "tests/markup/document_file.h"

namespace markup {
namespace {

TEST(MarkupTree, TellsWhereItsPartsStandInTheText) {
  const std::string text = "<?xml version='1.0'?>\n<a>\n  <b x='&lt;1'>&amp;two</b>\n</a>\n";
  const auto tree = parse(text);
  const auto* const b = tree->document.first_node("a")->first_node("b");
  EXPECT_EQ(tree->offsetOf(b->name()), text.find("b x"));
  EXPECT_EQ(tree->offsetOf(b->value()), text.find("&amp;"));
  EXPECT_EQ(tree->offsetOf(b->first_attribute("x")->value()), text.find("&lt;"));
  EXPECT_EQ(std::string(b->value(), b->value_size()), "&two");
}

TEST(MarkupTree, OfWhatIsNotWellFormedIsAnErrorWithItsPlace) {
  try {
    (void)parse("<a>\n<b></a>");
    FAIL() << "it was parsed";
  } catch (const ParseError& error) {
    EXPECT_FALSE(error.reason.empty());
    EXPECT_GE(error.offset, 8u);
    EXPECT_LE(error.offset, 12u);
  }
  try {
    (void)parse(std::string(MAX_SIZE + 1, ' '));
    FAIL() << "it was parsed";
  } catch (const ParseError& error) {
    EXPECT_EQ(error.offset, std::string::npos);
  }
}

TEST(MarkupTree, IsADocumentOfThePlatform) {
  using markup_testing::chars;
  TextDocument document(parse("<a n='7'>text</a>"));
  MLDoc::Token token;
  MLDoc::ChildIterator next(&document, token);
  ASSERT_TRUE(next(chars("a")));
  EXPECT_EQ(markup_testing::str(document.content(token)), "text");
  EXPECT_EQ(document.getInt(document.getAttributeValue(token, chars("n"))), 7);
  document.release();
}

}  // namespace
}  // namespace markup
