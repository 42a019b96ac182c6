#include "bridge/apply.h"

#include <gtest/gtest.h>

#include "tests/support/readable_bytes.h"

using testing_support::hex;
using testing_support::unhex;

namespace bridge {
namespace {

const ApplyRequest REQUEST = {.confirmSeconds = 0x01020304,
                              .save = true,
                              .message = "why",
                              .changes = {{{"LOG", 1}}, {{Change::Set, "A.B", "1"}}}};
const char* const BYTES =
    "04 03 02 01 01 03 00 00 00 77 68 79 "
    "01 00 00 00 03 00 00 00 4C 4F 47 01 00 00 00 00 00 00 00 "
    "01 03 00 00 00 41 2E 42 01 00 00 00 31";

TEST(ApplyBytes, OfARequest) {
  EXPECT_EQ(hex(encode(REQUEST)), BYTES);
  EXPECT_EQ(decodeApplyRequest(unhex(BYTES)), REQUEST);
  EXPECT_EQ(decodeApplyRequest(encode(ApplyRequest{})), ApplyRequest());
}

TEST(ApplyBytes, ThatAreCutOffOrTooManyAreRefused) {
  const std::string bytes = encode(REQUEST);
  const size_t withoutSteps = bytes.size() - 13;
  for (size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_EQ(decodeApplyRequest(bytes.substr(0, size)).has_value(), size == withoutSteps) << size;
  }
  EXPECT_FALSE(decodeApplyRequest(bytes + '\0'));
  EXPECT_FALSE(decodeApplyRequest(unhex("00 00 00 00 02 00 00 00 00 00 00 00 00"))) << "flags";
}

}  // namespace
}  // namespace bridge
