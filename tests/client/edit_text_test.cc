#include "client/edit_text.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace client
