// What the client finds in the schema of an agent.
#include "client/catalogue_view.h"

#include <gtest/gtest.h>

#include "schema/schema.h"

namespace client {
namespace {

TEST(CatalogueView, FindsParametersByTheirFullNames) {
  const CatalogueView view(schema::ownSchema());
  for (const char* name : {"IKE.IKE_PORT", "USERS[bob].PMP_TIMEOUT", "USERS[b.o[b].PMP_TIMEOUT"}) {
    EXPECT_NE(view.find(name), nullptr) << name;
  }
}

// A document may name anything.
TEST(CatalogueView, FindsNothingByOtherNames) {
  const CatalogueView view(schema::ownSchema());
  for (const char* name : {"", ".", "[", "]", "[.", ".[", "IKE", "IKE.", "IKE.FOO", "USERS[bob]",
                           "USERS[", "USERS[b.ob]", "USERS[bob].", "USERS.bob["}) {
    EXPECT_EQ(view.find(name), nullptr) << name;
  }
}

}  // namespace
}  // namespace client
