#include "markup/markup_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <rapidxml/rapidxml.hpp>
#include <string>

#include "tests/support/readable_bytes.h"

using testing_support::inQuotes;

namespace markup {
namespace {

std::string repeated(std::string_view part, size_t count) {
  std::string text;
  text.reserve(part.size() * count);
  for (; count > 0; --count) text += part;
  return text;
}

TEST(MarkupDepth, OfTexts) {
  const struct {
    std::string_view text;
    size_t depth;
  } rows[] = {
      {"", 0},
      {"no markup", 0},
      {"<a></a>", 1},
      {"<a/>", 1},
      {"<a />", 1},
      {"<a><b></b></a>", 2},
      {"<a><b/></a>", 2},
      {"<a><b/><b/><b/></a>", 2},
      {"<a></a><a></a>", 1},
      {"<a><b><c/></b><b/></a>", 3},
      // What holds no elements.
      {"<!-- <a><b> --><a/>", 1},
      {"<!--><a>--><a/>", 1},
      {"<a><![CDATA[<b><c></b>]]></a>", 1},
      {"<?xml version=\"1.0\"?><a/>", 1},
      {"<?<a>?><a/>", 1},
      {"<!anything ><a/>", 1},
      // Attribute values.
      {"<a x=\"<b><c>\"/>", 1},
      {"<a x=\"/>\"><b/></a>", 2},
      {"<a x='/>'><b/></a>", 2},
      {"<a x=\"'>'\" y='\">\"'/>", 1},
      {"<a x = \n\t\r \"/>\"><b/></a>", 2},
      // Quotes and "=" in names enclose nothing.
      {"<a\"><b></b></a\">", 2},
      {"<a='><b/></a='>", 2},
      {"<a \"='1'><b/></a>", 2},
      // A document type ends behind its declarations, whatever these hold.
      {"<!DOCTYPE a><a/>", 1},
      {"<!DOCTYPE a [ <!ELEMENT a (b)> <!-- ]><a><b/></a>", 2},
      {"<!DOCTYPE a [ [ > ] <? > ]><a><b/></a>", 2},
      {"<!DOCTYPE\n[>]><a/>", 1},
      {"<!DOCTYPE[><a><b/></a>", 2},
      {"<!DOCTYPE ]]><a/>", 1},
      // What is not closed counts up to where it stops making sense.
      {"<a><b><c>", 3},
      {"<", 1},
      {"<a", 1},
      {"<a><b", 2},
      {"<a><b x=\"><c>", 2},
      {"<a><b x=1><c>", 2},
      {"<a><!-- <b>", 1},
      {"<a><![CDATA[<b>", 1},
      {"<a><? <b>", 1},
      {"<a><!<b>", 1},
      {"<a><!DOCTYPE [<b>", 1},
      {"<!DOCTYPE", 0},
      {"</a></a><a/>", 1},
      {"</><a/>", 1},
      {"<a></b></c><d><e/></d>", 2},
  };
  for (const auto& row : rows) EXPECT_EQ(markupDepth(row.text), row.depth) << inQuotes(row.text);
}

TEST(MarkupDepth, OfDeepAndLongTexts) {
  EXPECT_EQ(markupDepth(repeated("<a>", 200'000)), 200'000U);
  EXPECT_EQ(markupDepth(repeated("<a>", 1000) + repeated("</a>", 1000)), 1000U);
  EXPECT_EQ(markupDepth(repeated("<a x='>'>", 1000)), 1000U);
  for (const char* part :
       {"<a/>", "<a></a>", "<!---->", "<!DOCTYPE>", "<!DOCTYPE >", "<?x?>", "a="}) {
    EXPECT_LE(markupDepth(repeated(part, 100'000)), 1U) << part;
  }
}

size_t depthOf(const rapidxml::xml_node<>& node) {
  size_t deepest = 0;
  for (auto* child = node.first_node(); child != nullptr; child = child->next_sibling()) {
    if (child->type() == rapidxml::node_element) deepest = std::max(deepest, 1 + depthOf(*child));
  }
  return deepest;
}

TEST(MarkupDepth, IsTheParsersForEveryTextThatItAccepts) {
  const char* const parts[] = {"<a>",  "<a>",  "</a>",  "</a>", "</a>", "<a/>",       "<a ",
                               "<a\"", "<a'>", "</a'>", ">",    "/>",   "x=",         "\"",
                               "'",    "=",    "t",     " ",    "<!--", "-->",        "<?",
                               "?>",   "<!",   "[",     "]",    "]]>",  "<!DOCTYPE ", "<![CDATA["};
  std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same texts every time
  int accepted = 0;
  for (int i = 0; i < 300'000; ++i) {
    std::string text;
    for (auto left = random() % 10; left > 0; --left) text += parts[random() % std::size(parts)];
    const size_t depth = markupDepth(text);
    rapidxml::xml_document<> document;
    std::string parsed = text;
    try {
      document.parse<rapidxml::parse_validate_closing_tags>(parsed.data());
    } catch (const rapidxml::parse_error&) {
      continue;
    }
    ++accepted;
    ASSERT_EQ(depth, depthOf(document)) << inQuotes(text);
  }
  EXPECT_GT(accepted, 1000);
}

}  // namespace
}  // namespace markup
