#include "bridge/history.h"

#include <gtest/gtest.h>

#include "tests/support/readable_bytes.h"

using testing_support::hex;
using testing_support::unhex;

namespace bridge {
namespace {

const Revision REVISION = {
    .number = 0x0102030405060708,
    .time = 0x1112131415161718,
    .uid = 0x21222324,
    .pid = -1,
    .program = "ctl",
    .message = std::string("\0", 1),
    .changes = {{.name = "A.B", .running = "1", .before = "2"}, {.name = "C", .secret = true}},
    .changesLeftOut = 5};
const char* const REVISION_BYTES =
    "08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11 24 23 22 21 FF FF FF FF "
    "03 00 00 00 63 74 6C 01 00 00 00 00 "
    "1C 00 00 00 00 00 00 00 03 00 00 00 41 2E 42 11 01 00 00 00 31 01 00 00 00 32 "
    "01 00 00 00 43 08 05 00 00 00";

const SaveRequest SAVE = {.force = true, .message = "why"};
const char* const SAVE_BYTES = "01 03 00 00 00 77 68 79";

TEST(HistoryBytes, OfARevision) {
  const std::string bytes = encode(REVISION);
  EXPECT_EQ(hex(bytes), REVISION_BYTES);
  EXPECT_EQ(decodeRevision(bytes), REVISION);
  EXPECT_EQ(decodeRevisions(bytes + bytes), (std::vector{REVISION, REVISION}));
  EXPECT_EQ(decodeRevisions(""), std::vector<Revision>());
}

TEST(HistoryBytes, OfASave) {
  EXPECT_EQ(hex(encode(SAVE)), SAVE_BYTES);
  EXPECT_EQ(decodeSaveRequest(unhex(SAVE_BYTES)), SAVE);
  EXPECT_EQ(decodeSaveRequest(encode(SaveRequest{})), SaveRequest());
  EXPECT_FALSE(decodeSaveRequest(unhex("02 00 00 00 00"))) << "a flag that is none";
}

TEST(HistoryBytes, ThatAreCutOffOrTooManyAreRefused) {
  const std::string revision = encode(REVISION);
  for (size_t size = 0; size < revision.size(); ++size) {
    EXPECT_FALSE(decodeRevision(revision.substr(0, size))) << size;
    EXPECT_EQ(decodeRevisions(revision.substr(0, size)).has_value(), size == 0) << size;
  }
  EXPECT_FALSE(decodeRevision(revision + '\0'));
  EXPECT_FALSE(decodeRevisions(revision + '\0'));
  const std::string save = encode(SAVE);
  for (size_t size = 0; size < save.size(); ++size) {
    EXPECT_FALSE(decodeSaveRequest(save.substr(0, size))) << size;
  }
  EXPECT_FALSE(decodeSaveRequest(save + '\0'));
}

TEST(HistoryBytes, OfARevisionHoldNoRevisionsOfGroups) {
  Revision revision;
  std::string bytes = encode(revision);
  const size_t changes = 8 + 8 + 4 + 4 + 4 + 4;
  bytes.replace(changes, 8, unhex("10 00 00 00 01 00 00 00") + std::string(12, '\0'));
  EXPECT_FALSE(decodeRevision(bytes));
}

}  // namespace
}  // namespace bridge
