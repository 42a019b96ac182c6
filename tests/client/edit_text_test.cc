#include "client/edit_text.h"

#include <gtest/gtest.h>

#include "schema/schema.h"

namespace client {
namespace {

TEST(EditText, RemarksStandAboveTheirLinesAndGoAgain) {
  const std::string text = "a\nb\n\nc";
  const std::string marked =
      withRemarks(text, {{{4, 1}, "about c"}, {{}, "about all"}, {{2, 1}, "1"}, {{2, 5}, "2"}});
  EXPECT_EQ(marked, "#! about all\na\n#! 1\n#! 2\nb\n\n#! about c\nc");
  EXPECT_EQ(withoutRemarks(marked), text);
  EXPECT_EQ(withoutRemarks(""), "");
  EXPECT_EQ(withRemarks("", {{{}, "it is empty"}}), "#! it is empty\n");
}

TEST(EditText, HasNoLinesOfUsersWhoWereRemoved) {
  const CatalogueView catalogue(schema::ownSchema());
  const bridge::NamedValues values{
      .values = {{.name = "USERS[ann].PMP_TIMEOUT", .saved = "20", .byDefault = "10"},
                 {.name = "USERS[bob].PMP_TIMEOUT", .running = "30", .byDefault = "10"}}};
  const std::string text = editableText(values, catalogue, false);
  EXPECT_EQ(text.find("ann"), std::string::npos);
  EXPECT_TRUE(text.ends_with("\nUSERS[bob].PMP_TIMEOUT=30\n")) << text;
}

}  // namespace
}  // namespace client
