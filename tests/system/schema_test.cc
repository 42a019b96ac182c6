// What the agent tells of its catalogue, and commands that it does not know.
#include "schema/schema.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/system/system_test.h"

using bridge::Reason;
using nlohmann::json;

namespace system_testing {
namespace {

TEST_F(SystemTest, SchemaIsThatOfTheCatalogueAndTheStatusHasItsHash) {
  start();
  const BridgeClient client = connect();
  const bridge::Reply reply = client.call("schema", "");
  EXPECT_EQ(reply.result, 1);
  EXPECT_EQ(reply.text, "");
  EXPECT_EQ(reply.output, schema::ownSchema());

  client.send(bridge::encode(bridge::StatusRequest{}));
  EXPECT_EQ(json::parse(client.receiveReply().output)["catalogue"], schema::ownHash());
}

TEST_F(SystemTest, CommandThatTheAgentDoesNotKnowIsRefusedAndTheSessionGoesOn) {
  start();
  const BridgeClient client = connect();
  for (const std::string name : {"", "Schema", "schema ", "no\nsuch"}) {
    const bridge::Reply reply = client.call(name, "input");
    EXPECT_EQ(reply.result, 0);
    EXPECT_EQ(reply.reason, Reason::NoSuchCommand);
    EXPECT_EQ(reply.output, "");
  }
  EXPECT_EQ(client.read("IKE").result, 1);
}

}  // namespace
}  // namespace system_testing
