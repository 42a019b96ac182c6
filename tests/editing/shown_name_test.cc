#include "editing/shown_name.h"

#include <gtest/gtest.h>

#include <string>

namespace editing {
namespace {

TEST(ShownName, IsWhatHasTheFormOfAName) {
  for (const std::string name :
       {"IKE.QCD_SECRET", "ike.port2", "USERS[bob].NAME", "USERS[0]", "USERS[a=b [x]].NAME",
        "USERS[bob]NAME", "USERS[bob", "IKE[3].PORT", "IKE[0].PORT", "A0.Z9", "NOTES", ""}) {
    EXPECT_EQ(shownName(name), name);
  }
}

TEST(ShownName, OfAUserIsFitForALine) {
  EXPECT_EQ(shownName("USERS[a\nb].NAME"), "USERS[a\\x0ab].NAME");
}

TEST(ShownName, HidesWhatMayBeAValue) {
  for (const std::string name :
       {"IKE.QCD_SECRET sesame", "IKE.QCD_SECRET:sesame", "IKE.QCD_SECRET[sesame]",
        "c2VjcmV0=", "USERS[open sesame", "USERS[bob].PASSWORD sesame", "USERS[bob] sesame",
        "a]sesame[", "IKE.QCD_SECRET\tsesame"}) {
    EXPECT_EQ(shownName(name), "(" + std::to_string(name.size()) + " bytes, not shown)");
  }
}

TEST(ShownName, IsCutOff) { EXPECT_EQ(shownName(std::string(300, 'x')), std::string(200, 'x')); }

}  // namespace
}  // namespace editing
