#include "client/revision.h"

#include <gtest/gtest.h>

namespace client {
namespace {

TEST(Revision, SecretsThatOneMayNotSeeAreNotWanted) {
  const bridge::NamedValues revision{.values = {{.name = "IKE.IKE_PORT", .running = "501"},
                                                {.name = "IKE.QCD_SECRET", .secret = true}}};
  EXPECT_EQ(wantedOf(revision, {}),
            (Wanted{.values = {{"IKE.IKE_PORT", "501"}}, .exclusive = true, .exactOrder = true}));
}

}  // namespace
}  // namespace client
