#include "lparams/values/values.h"

#include <gmock/gmock.h>

#include <string>
#include <typeinfo>

#include "lparams/catalogue/catalogue.h"
#include "lparams/values/visit.h"
#include "tests/module/lock_calls.h"

namespace LPARAMS::Server {
namespace {

using namespace std::string_literals;

TEST(Values, LegalValuesOfEachClass) {
  IKE_t ike;
  UPDATE_t update;
  EXPECT_EQ(legalValues(ike.PERSISTENT_SA), "0 or 1");
  EXPECT_EQ(legalValues(ike.NATT_PORT), "a whole number from 1 to 65535");
  EXPECT_EQ(legalValues(ike.IPSEC_MAX_ICV_CHECK_FAILS), "a whole number from 0 to 1000000000");
  EXPECT_EQ(legalValues(update.CHECK_UPDATE_INTERVAL), "a whole number from 0 to 4294967295");
  EXPECT_EQ(legalValues(ike.IPSEC_ANTI_REPLAY_WINDOW), "one of 0, 1*32, 2*32, 4*32, 8*32, 16*32");
  EXPECT_EQ(legalValues(update.PATH), "one line of text without control characters");
  EXPECT_EQ(legalValues(ike.QCD_SECRET), "one line of text without control characters");
}

TEST(Values, ValueIsSpeltAsInTheSettingsFile) {
  IKE_t ike;
  UPDATE_t update;
  EXPECT_EQ(valueText(ike.PERSISTENT_SA), "0");
  EXPECT_EQ(valueText(ike.NATT_PORT), "4500");
  EXPECT_EQ(valueText(ike.IPSEC_ANTI_REPLAY_WINDOW), "2*32");
  EXPECT_EQ(valueText(update.PATH), "");
  update.PATH.value = "/a path/with=equals";
  EXPECT_EQ(valueText(update.PATH), "/a path/with=equals");
}

TEST(Values, AValueIsLegalOrNot) {
  IKE_t ike;
  UPDATE_t update;
  EXPECT_TRUE(isLegal(ike.IKE_PORT));
  ike.IKE_PORT.value = 0;
  EXPECT_FALSE(isLegal(ike.IKE_PORT));
  ike.EXCHANGE_TIMEOUT.value = 600;
  EXPECT_TRUE(isLegal(ike.EXCHANGE_TIMEOUT));
  ike.EXCHANGE_TIMEOUT.value = 601;
  EXPECT_FALSE(isLegal(ike.EXCHANGE_TIMEOUT));
  ike.ERRNTF_POLICY.value = -1;
  EXPECT_TRUE(isLegal(ike.ERRNTF_POLICY));
  ike.ERRNTF_POLICY.value = -2;
  EXPECT_FALSE(isLegal(ike.ERRNTF_POLICY));
  EXPECT_EQ(valueText(ike.ERRNTF_POLICY), "-2");
  EXPECT_EQ(ike.ERRNTF_POLICY.value, -2) << "to be looked at changes a value";
  EXPECT_TRUE(isLegal(ike.PERSISTENT_SA));
  update.PATH.value = "a\tb";
  EXPECT_FALSE(isLegal(update.PATH));
  ike.QCD_SECRET.value = "\x7f";
  EXPECT_FALSE(isLegal(ike.QCD_SECRET));
}

TEST(Values, OnlyLegalTextIsStored) {
  IKE_t ike;
  EXPECT_TRUE(setValue(ike.EXCHANGE_TIMEOUT, "61"));
  EXPECT_EQ(ike.EXCHANGE_TIMEOUT.value, 61u);
  for (const char* text : {"", "4", "601", "-1", "+61", " 61", "61 ", "4294967357", "0x3D"}) {
    EXPECT_FALSE(setValue(ike.EXCHANGE_TIMEOUT, text)) << text;
    EXPECT_EQ(ike.EXCHANGE_TIMEOUT.value, 61u) << text;
  }
  EXPECT_TRUE(setValue(ike.PERSISTENT_SA, "True"));
  EXPECT_TRUE(ike.PERSISTENT_SA.value);
  EXPECT_FALSE(setValue(ike.PERSISTENT_SA, "2"));
}

TEST(Values, AreLookedAtAndStoredUnderTheParametersLock) {
  IKE_t ike;
  host::recordTakings();
  EXPECT_TRUE(isLegal(ike.IKE_PORT));
  EXPECT_THAT(host::locksTaken(), testing::ElementsAre(&ike.IKE_PORT));
  host::recordTakings();
  EXPECT_EQ(valueText(ike.IKE_PORT), "500");
  EXPECT_THAT(host::locksTaken(), testing::ElementsAre(&ike.IKE_PORT));
  host::recordTakings();
  EXPECT_TRUE(setValue(ike.IKE_PORT, "501"));
  EXPECT_THAT(host::locksTaken(), testing::ElementsAre(&ike.IKE_PORT));
}

TEST(Values, OneParameterIsASecret) {
  const Catalogue catalogue;
  for (const ParamGroup* group : catalogue.groups()) {
    for (const Param* param : group->fileParams) {
      EXPECT_EQ(isSecret(*param), param == &catalogue.IKE->QCD_SECRET) << param->name;
    }
  }
}

TEST(Values, TheMeaningStandsBehindTheName) {
  const Catalogue catalogue;
  EXPECT_EQ(meaningOf(catalogue.IKE->IKE_PORT), "IKE port number");
  EXPECT_STREQ(catalogue.IKE->IKE_PORT.name, "IKE_PORT");
  EXPECT_EQ(meaningOf(catalogue.LOG->FACILITY), "");
}

TEST(Values, EveryClassOfTheCatalogueIsVisitedAsWhatItIs) {
  const Catalogue catalogue;
  for (const ParamGroup* group : catalogue.groups()) {
    for (Param* param : group->fileParams) {
      visit(*param, [&](auto& typed) { EXPECT_EQ(typeid(typed), typeid(*param)) << param->name; });
      EXPECT_EQ(visit(*param, [](auto& typed) -> const void* { return &typed; }),
                dynamic_cast<const void*>(param));
    }
  }
}

TEST(Values, AGroupHasNone) {
  IKE_t ike;
  EXPECT_THROW((void)valueText(ike), std::logic_error);
}

TEST(Values, ControlBytes) {
  EXPECT_FALSE(hasControlBytes(""));
  EXPECT_FALSE(hasControlBytes(" ~\x80\xff"));
  EXPECT_TRUE(hasControlBytes("a\n"));
  EXPECT_TRUE(hasControlBytes("\0"s));
  EXPECT_TRUE(hasControlBytes("\x1f"));
  EXPECT_TRUE(hasControlBytes("\x7f"));
}

}  // namespace
}  // namespace LPARAMS::Server
