#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

TEST_F(Client, GetPrintsValuesOfAnyGroupByteForByte) {
  EXPECT_EQ(out({"get", "IKE.IKE_PORT", "UPDATE.SCHEDULE", "USERS[bob].PMP_TIMEOUT",
                 "USERS[0].NAME", "IKE.DPD_IDLE_TIME"}),
            "500\n0 3 * * 6\n10\nalice\n45\n");
  EXPECT_EQ(json::parse(out({"get", "IKE.IKE_PORT", "USERS[bob].NAME", "--json"})),
            json::parse(R"({"IKE": {"IKE_PORT": 500}, "USERS": {"bob": {"NAME": "bob"}}})"));
  EXPECT_EQ(ctl({"get", "IKE.IKE_PROT", "USERS[bbo].NAME"}),
            failed(65,
                   "IKE.IKE_PROT: no such parameter; did you mean IKE.IKE_PORT?\n"
                   "USERS[bbo].NAME: no such user; did you mean USERS[bob].NAME?"));
  EXPECT_EQ(ctl({"get", "IKE"}),
            failed(64, "\"get\" prints single parameters; \"show\" prints groups and users"));
}

}  // namespace
}  // namespace system_testing
