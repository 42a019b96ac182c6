#include "agent/base/param_words.h"

#include <gtest/gtest.h>

#include <string>

#include "lparams/catalogue/ike_group.h"
#include "lparams/catalogue/log_group.h"
#include "lparams/catalogue/update_group.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;

TEST(ParamWords, LegalValuesOfEachKind) {
  IKE_t ike;
  UPDATE_t update;
  EXPECT_EQ(legalValuesOf(ike.PERSISTENT_SA), "0 or 1");
  EXPECT_EQ(legalValuesOf(ike.NATT_PORT), "a number from 1 to 65535");
  EXPECT_EQ(legalValuesOf(ike.IPSEC_MAX_ICV_CHECK_FAILS), "a number from 0 to 1000000000");
  EXPECT_EQ(legalValuesOf(update.CHECK_UPDATE_INTERVAL), "a number from 0 to 4294967295");
  EXPECT_EQ(legalValuesOf(ike.IPSEC_ANTI_REPLAY_WINDOW), "one of 0, 1*32, 2*32, 4*32, 8*32, 16*32");
  EXPECT_EQ(legalValuesOf(update.PATH), "text on one line");
  EXPECT_EQ(legalValuesOf(ike.QCD_SECRET), "text on one line");
}

TEST(ParamWords, ValueIsSpeltAsInTheSettingsFile) {
  IKE_t ike;
  UPDATE_t update;
  EXPECT_EQ(valueOf(ike.PERSISTENT_SA), "0");
  EXPECT_EQ(valueOf(ike.NATT_PORT), "4500");
  EXPECT_EQ(valueOf(ike.IPSEC_ANTI_REPLAY_WINDOW), "2*32");
  EXPECT_EQ(valueOf(update.PATH), "");
  update.PATH.value = "/a path/with=equals";
  EXPECT_EQ(valueOf(update.PATH), "/a path/with=equals");
}

TEST(ParamWords, ValueOfASecretIsHidden) {
  IKE_t ike;
  EXPECT_EQ(valueOf(ike.QCD_SECRET), "(hidden)");
  ike.QCD_SECRET.value = "secret";
  EXPECT_EQ(valueOf(ike.QCD_SECRET), "(hidden)");
}

}  // namespace
}  // namespace agent
