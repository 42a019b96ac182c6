#include "bridge/named_values.h"

#include <gtest/gtest.h>

#include "tests/support/readable_bytes.h"

using testing_support::hex;
using testing_support::unhex;

namespace bridge {
namespace {

const NamedValues VALUES = {
    {{"IKE", 0x0807060504030201}},
    {{.name = "A.B", .running = "1", .saved = "", .byDefault = "3", .before = "4"},
     {.name = "C", .secret = true},
     {.name = "D", .saved = std::string("\0", 1)}}};
const char* const VALUES_BYTES =
    "01 00 00 00 03 00 00 00 49 4B 45 01 02 03 04 05 06 07 08 "
    "03 00 00 00 41 2E 42 17 01 00 00 00 31 00 00 00 00 01 00 00 00 33 01 00 00 00 34 "
    "01 00 00 00 43 08 01 00 00 00 44 02 01 00 00 00 00";

const NamedChanges CHANGES = {
    {{"LOG", 1}},
    {{Change::Set, "A.B", "1"}, {Change::AddUser, "bob"}, {Change::RemoveUser, "al"}}};
const char* const CHANGES_BYTES =
    "01 00 00 00 03 00 00 00 4C 4F 47 01 00 00 00 00 00 00 00 "
    "01 03 00 00 00 41 2E 42 01 00 00 00 31 02 03 00 00 00 62 6F 62 03 02 00 00 00 61 6C";

TEST(NamedValues, BytesOfNames) {
  const Names names = {"IKE", "", "USERS[b]"};
  const char* const bytes = "03 00 00 00 49 4B 45 00 00 00 00 08 00 00 00 55 53 45 52 53 5B 62 5D";
  EXPECT_EQ(hex(encode(names)), bytes);
  EXPECT_EQ(decodeNames(unhex(bytes)), names);
  EXPECT_EQ(decodeNames(""), Names());
}

TEST(NamedValues, BytesOfValues) {
  EXPECT_EQ(hex(encode(VALUES)), VALUES_BYTES);
  EXPECT_EQ(decodeNamedValues(unhex(VALUES_BYTES)), VALUES);
}

TEST(NamedValues, BytesOfChanges) {
  EXPECT_EQ(hex(encode(CHANGES)), CHANGES_BYTES);
  EXPECT_EQ(decodeNamedChanges(unhex(CHANGES_BYTES)), CHANGES);
}

/// Whether the first `size` bytes are whole messages: those that end between two items are.
template <typename Decode>
size_t wholePrefixes(const std::string& bytes, Decode decode) {
  size_t whole = 0;
  for (size_t size = 0; size < bytes.size(); ++size) whole += decode(bytes.substr(0, size)) ? 1 : 0;
  return whole;
}

TEST(NamedValues, WhatIsCutOffIsRefused) {
  EXPECT_EQ(wholePrefixes(unhex(VALUES_BYTES), decodeNamedValues), 3U);
  EXPECT_EQ(wholePrefixes(unhex(CHANGES_BYTES), decodeNamedChanges), 3U);
  EXPECT_EQ(wholePrefixes(unhex("01 00 00 00 41 01 00 00 00 42"), decodeNames), 2U);
}

TEST(NamedValues, WhatIsNotAStepOrAnnouncesTooMuchIsRefused) {
  for (const char* bytes : {"00 00 00 00 00 00 00 00 00", "00 00 00 00 04 00 00 00 00",
                            "FF FF FF FF", "00 00 00 00 02 FF FF FF FF"}) {
    EXPECT_FALSE(decodeNamedChanges(unhex(bytes))) << bytes;
  }
  EXPECT_FALSE(decodeNamedValues(unhex("FF FF FF FF 00 00 00 00")));
  EXPECT_FALSE(decodeNames(unhex("FF FF FF FF")));
}

TEST(NamedValues, RequestsHaveALimit) {
  EXPECT_TRUE(decodeNames(std::string(MAX_NAMED_ITEMS * 4, '\0')));
  EXPECT_FALSE(decodeNames(std::string((MAX_NAMED_ITEMS + 1) * 4, '\0')));
  std::string changes = encode(NamedChanges{});
  for (size_t i = 0; i <= MAX_NAMED_ITEMS; ++i) changes += unhex("02 00 00 00 00");
  EXPECT_FALSE(decodeNamedChanges(changes));
  EXPECT_TRUE(decodeNamedChanges(changes.substr(0, changes.size() - 5)));
}

}  // namespace
}  // namespace bridge
