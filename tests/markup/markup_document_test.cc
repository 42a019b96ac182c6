#include "platform/markup_document.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/markup/document_file.h"

using markup_testing::chars;
using markup_testing::DocumentFile;
using markup_testing::str;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A loaded document and the way into it.
class Document {
 public:
  explicit Document(const std::string& text) : file_(text) {
    EXPECT_TRUE(document.load(file_.path.c_str()));
  }

  /// The children named `tag` of an element, or of the document itself.
  std::vector<MLDoc::Token> children(std::string_view tag, MLDoc::Token parent = {}) {
    std::vector<MLDoc::Token> found;
    MLDoc::ChildIterator next(&document, parent);
    while (next(chars(tag))) found.push_back(parent);
    return found;
  }

  MLDoc::Token only(std::string_view tag, MLDoc::Token parent = {}) {
    const auto found = children(tag, parent);
    EXPECT_EQ(found.size(), 1U) << tag;
    return found.at(0);
  }

  std::string content(MLDoc::Token element) { return str(document.content(element)); }

  std::vector<std::string> contents(std::string_view tag, MLDoc::Token parent = {}) {
    std::vector<std::string> texts;
    for (const MLDoc::Token& child : children(tag, parent)) texts.push_back(content(child));
    return texts;
  }

  std::string attribute(MLDoc::Token element, std::string_view name) {
    return str(document.getAttributeValue(element, chars(name)));
  }

 private:
  const DocumentFile file_;

 public:
  MLDoc document;
};

TEST(MarkupDocument, GivesChildrenOfOneNameInTheirOrder) {
  Document at("<r><p>1</p><q>2</q><p>3</p>text<P>4</P><p>5</p></r>");
  const MLDoc::Token root = at.only("r");
  EXPECT_THAT(at.contents("p", root), ElementsAre("1", "3", "5"));
  EXPECT_THAT(at.contents("P", root), ElementsAre("4"));
  EXPECT_THAT(at.contents("pp", root), IsEmpty());
  EXPECT_THAT(at.contents("p"), IsEmpty()) << "children of the document, not of the root";
}

TEST(MarkupDocument, GivesSeveralTopLevelElements) {
  Document at("<a>1</a><a>2</a>");
  EXPECT_THAT(at.contents("a"), ElementsAre("1", "2"));
}

TEST(MarkupDocument, WalksOnDifferentLevelsDoNotDisturbEachOther) {
  Document at("<r><m><p>1</p><p>2</p></m><m/><m><p>3</p></m></r>");
  MLDoc::Token module = at.only("r");
  std::vector<std::string> texts;
  MLDoc::ChildIterator nextModule(&at.document, module);
  while (nextModule(chars("m"))) {
    MLDoc::Token param = module;
    MLDoc::ChildIterator nextParam(&at.document, param);
    while (nextParam(chars("p"))) texts.push_back(at.content(param));
    texts.emplace_back("|");
  }
  EXPECT_THAT(texts, ElementsAre("1", "2", "|", "|", "3", "|"));
}

TEST(MarkupDocument, GivesAttributesByTheirExactName) {
  Document at("<e Name=\"n\" Other='o \"x\" > />' Empty=\"\"/>");
  const MLDoc::Token element = at.only("e");
  EXPECT_EQ(at.attribute(element, "Name"), "n");
  EXPECT_EQ(at.attribute(element, "Other"), "o \"x\" > />");
  EXPECT_EQ(at.attribute(element, "Empty"), "");
  for (const char* missing : {"name", "Nam", "Names", ""}) {
    const ChPair value = at.document.getAttributeValue(element, chars(missing));
    EXPECT_EQ(value.begin, value.end) << missing;
  }
  EXPECT_EQ(at.document.getAttributeValue(element, chars("name")).begin, nullptr);
}

TEST(MarkupDocument, GivesTheTextOfAnElement) {
  const struct {
    const char* document;
    const char* text;
  } rows[] = {
      {"<e/>", ""},
      {"<e></e>", ""},
      {"<e>text</e>", "text"},
      {"<e> two  words\n</e>", " two  words\n"},
      {"<e>&lt;a&gt; &amp; &quot;b&apos;</e>", "<a> & \"b'"},
      {"<e>&#65;&#x42;&#xE9;</e>", "AB\xC3\xA9"},
      {"<e>\xEF\xBB\xBF\xFF</e>", "\xEF\xBB\xBF\xFF"},
      {"<e><![CDATA[<a> & &lt;]]></e>", "<a> & &lt;"},
      {"<e><![CDATA[]]></e>", ""},
      {"<e><f>inner</f></e>", ""},
      {"<e><!-- no --></e>", ""},
      {"<e><f/>behind</e>", "behind"},
  };
  for (const auto& row : rows) {
    Document at(row.document);
    EXPECT_EQ(at.content(at.only("e")), row.text) << row.document;
  }
}

TEST(MarkupDocument, TranslatesEntitiesInAttributes) {
  Document at("<e x=\"&lt;&quot;&#65;\"/>");
  EXPECT_EQ(at.attribute(at.only("e"), "x"), "<\"A");
}

TEST(MarkupDocument, BeginsWithWhatADocumentMayBeginWith) {
  for (const char* start :
       {"\xEF\xBB\xBF", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", "<!-- <e>no</e> -->",
        " \r\n", "<!DOCTYPE e [ <!ELEMENT e (#PCDATA)> ]>", ""}) {
    Document at(std::string(start) + "<e>1</e>");
    EXPECT_THAT(at.contents("e"), ElementsAre("1")) << start;
  }
}

TEST(MarkupDocument, OfNothingHasNoChildren) {
  Document at("");
  EXPECT_THAT(at.children("e"), IsEmpty());
}

TEST(MarkupDocument, IsReplacedByTheNextOne) {
  Document at("<a/>");
  const DocumentFile next("<b/>");
  EXPECT_TRUE(at.document.load(next.path.c_str()));
  EXPECT_THAT(at.children("a"), IsEmpty());
  EXPECT_EQ(at.children("b").size(), 1U);
}

TEST(MarkupDocument, HasNoChildrenBeforeItIsReadAndAfterItIsReleased) {
  Document at("<a/>");
  at.document.release();
  EXPECT_THAT(at.children("a"), IsEmpty());
  at.document.release();
  EXPECT_THAT(at.children("a"), IsEmpty());

  MLDoc unread;
  MLDoc::Token top;
  EXPECT_FALSE(MLDoc::ChildIterator(&unread, top)(chars("a")));
  unread.release();
}

TEST(MarkupDocument, IgnoresItsOwnWarnings) {
  Document at("<a/>");
  const MLDoc::Token element = at.only("a");
  at.document.warn(TTT("odd"), &element, nullptr);
  EXPECT_EQ(at.children("a").size(), 1U);
}

}  // namespace
