#include "client/glob.h"

#include <gtest/gtest.h>

namespace client {
namespace {

TEST(Glob, StandsForTexts) {
  const struct {
    const char* glob;
    const char* text;
    bool matches;
  } ROWS[] = {
      {"", "", true},          {"", "a", false},        {"abc", "ABC", true},
      {"a?c", "abc", true},    {"a?c", "ac", false},    {"*", "", true},
      {"*", "anything", true}, {"a*c", "abbbc", true},  {"a*c", "abbbd", false},
      {"*b*", "abc", true},    {"*a*b", "aXbYb", true}, {"a**", "a", true},
      {"[b]", "[b]", true},    {"[b]", "b", false},     {"?", "", false},
      {"*x", "abc", false},    {"abc*", "ab", false},   {"*TIME*", "exchange_timeout", true},
  };
  for (const auto& row : ROWS) {
    EXPECT_EQ(matchesGlob(row.glob, row.text), row.matches) << row.glob << " " << row.text;
  }
}

TEST(Glob, StandsForTheFullNameTheOwnerOrTheMember) {
  for (const char* glob : {"IKE.IKE_PORT", "ike", "ike_port", "IKE.*", "*"}) {
    EXPECT_TRUE(matchesName(glob, "IKE.IKE_PORT")) << glob;
  }
  EXPECT_FALSE(matchesName("IKE_", "IKE.IKE_PORT"));
  EXPECT_TRUE(matchesName("USERS[bob]", "USERS[bob].PMP_TIMEOUT"));
  EXPECT_TRUE(matchesName("USERS[bob]", "USERS[bob]")) << "a user as a whole";
  EXPECT_FALSE(matchesName("", "USERS"));
}

}  // namespace
}  // namespace client
