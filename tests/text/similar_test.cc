#include "text/similar.h"

#include <gtest/gtest.h>

namespace text {
namespace {

TEST(Similar, DistanceCountsMistakes) {
  const struct {
    const char* a;
    const char* b;
    size_t mistakes;
  } ROWS[] = {
      {"", "", 0},         {"", "abc", 3},    {"abc", "", 3},     {"abc", "abc", 0},
      {"abc", "ABC", 0},   {"abc", "acb", 1}, {"abc", "abcd", 1}, {"abc", "xbc", 1},
      {"PROT", "PORT", 1}, {"ab", "ba", 1},   {"ca", "abc", 3},   {"kitten", "sitting", 3},
  };
  for (const auto& row : ROWS) {
    EXPECT_EQ(distance(row.a, row.b), row.mistakes) << row.a << " " << row.b;
    EXPECT_EQ(distance(row.b, row.a), row.mistakes) << row.b << " " << row.a;
  }
}

TEST(Similar, NearestCandidateIsFound) {
  const std::vector<std::string> candidates = {"IKE.IKE_PORT", "IKE.NATT_PORT", "LOG.WALL_ON"};
  EXPECT_EQ(similar("IKE.IKE_PROT", candidates), "IKE.IKE_PORT");
  EXPECT_EQ(similar("ike.natt_port", candidates), "IKE.NATT_PORT");
  EXPECT_EQ(similar("LOG.WALLON", candidates), "LOG.WALL_ON");
  EXPECT_EQ(similar("ADMIN.GROUP", candidates), "");
  EXPECT_EQ(similar("", candidates), "");
  EXPECT_EQ(similar("x", {"y"}), "") << "one mistake in one letter";
  EXPECT_EQ(similar(std::string(129, 'x'), {std::string(129, 'x')}), "") << "too long to look at";
}

}  // namespace
}  // namespace text
