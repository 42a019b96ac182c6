#include "agent/state/settings_review.h"

#include <gtest/gtest.h>

#include <string>

namespace agent {
namespace {

using inspection::Finding;

TEST(SettingsReview, NamesTheFirstFiveThatAreNotReadBack) {
  inspection::Findings findings;
  const auto addNotReadBack = [&](const std::string& path) {
    findings.first.push_back({.kind = Finding::NotReadBack, .path = path});
  };
  EXPECT_EQ(namesNotReadBack(findings), "");
  addNotReadBack("A");
  findings.first.push_back({.kind = Finding::Edited, .path = "X"});
  EXPECT_EQ(namesNotReadBack(findings), "A");
  for (const char* path : {"B", "C", "D", "E"}) addNotReadBack(path);
  EXPECT_EQ(namesNotReadBack(findings), "A, B, C, D, E");
  addNotReadBack("F");
  EXPECT_EQ(namesNotReadBack(findings), "A, B, C, D, E, ...");
}

}  // namespace
}  // namespace agent
