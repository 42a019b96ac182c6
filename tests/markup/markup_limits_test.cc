// Documents that the parser does not take.
#include <gmock/gmock.h>

#include <string>

#include "tests/markup/document_file.h"

using markup_testing::chars;
using markup_testing::DocumentFile;
using markup_testing::errorOf;
using testing::ContainsRegex;
using testing::HasSubstr;

namespace {

constexpr size_t LIMIT = 1024 * 1024;  // bytes

std::string repeated(const std::string& part, size_t count) {
  std::string text;
  for (; count > 0; --count) text += part;
  return text;
}

std::string nested(size_t depth) { return repeated("<a>", depth) + repeated("</a>", depth); }

TEST(MarkupDocument, ThatIsMalformedIsAnErrorWithItsPlace) {
  for (const char* text : {
           "text",
           "<",
           "<a",
           "<a>",
           "<a><b></a></b>",
           "<a></A>",
           "</a>",
           "<a></a",
           "<a/ >",
           "<a x></a>",
           "<a x=1></a>",
           "<a x='1></a>",
           "<a x='1\"></a>",
           "<>",
           "<a>&#xD800000;</a>",
           "<a>&#65</a>",
           "<a><!-- </a>",
           "<a><![CDATA[ </a>",
           "<?xml",
           "<!DOCTYPE a [",
       }) {
    EXPECT_THAT(errorOf(text), ContainsRegex("^[a-z].* at byte [0-9]+, line [0-9]+$")) << text;
  }
}

TEST(MarkupDocument, ThatBreaksOffAnywhereIsAnError) {
  const std::string text =
      "<?xml version='1.0'?><!-- c --><a x=\"&lt;\"><b>t</b><c/><![CDATA[d]]></a>";
  EXPECT_EQ(errorOf(text), "");
  for (size_t size = text.find("<a") + 1; size < text.size(); ++size) {
    EXPECT_THAT(errorOf(text.substr(0, size)), HasSubstr(" at byte ")) << text.substr(0, size);
  }
}

TEST(MarkupDocument, MayHaveOneMebibyte) {
  const std::string shell = "<a></a>";
  const std::string largest = "<a>" + std::string(LIMIT - shell.size(), 'x') + "</a>";
  EXPECT_EQ(errorOf(largest), "");
  EXPECT_EQ(errorOf(largest + " "), "the document is larger than 1048576 bytes");
  EXPECT_EQ(errorOf(repeated(largest, 8)), "the document is larger than 1048576 bytes");
}

TEST(MarkupDocument, MayNestSixtyFourElements) {
  const std::string tooDeep = "the document is nested deeper than 64 elements";
  EXPECT_EQ(errorOf(nested(64)), "");
  EXPECT_EQ(errorOf(nested(65)), tooDeep);
  EXPECT_EQ(errorOf(nested(100'000)), tooDeep);
  EXPECT_EQ(errorOf(repeated("<a>", 200'000)), tooDeep);
}

TEST(MarkupDocument, CannotHideItsNesting) {
  const std::string deep = repeated("<a>", 200'000);
  for (const char* cover : {"<q\">", "<q'>", "<q \"='1'>", "<q=\">", "<!DOCTYPE q [ <!x> <!-- ]>",
                            "<!DOCTYPE q [ <!x> <? ]>", "<!DOCTYPE[>", "<!>", "<!x'>"}) {
    EXPECT_THAT(errorOf(cover + deep), HasSubstr("nested deeper")) << cover;
  }
}

TEST(MarkupDocument, ThatCannotBeReadHasNoChildren) {
  const host::TempDirectory directory;
  for (const std::string& path : {directory.path + "missing", directory.path, std::string()}) {
    MLDoc document;
    EXPECT_FALSE(document.load(path.c_str())) << path;
    MLDoc::Token top;
    EXPECT_FALSE(MLDoc::ChildIterator(&document, top)(chars("a"))) << path;
  }
}

TEST(MarkupDocument, IsGoneAfterALoadThatFails) {
  const DocumentFile good("<a/>");
  const DocumentFile bad("<a>");
  MLDoc document;
  ASSERT_TRUE(document.load(good.path.c_str()));
  EXPECT_THROW(document.load(bad.path.c_str()), TTT);
  MLDoc::Token top;
  EXPECT_FALSE(MLDoc::ChildIterator(&document, top)(chars("a")));
}

}  // namespace
