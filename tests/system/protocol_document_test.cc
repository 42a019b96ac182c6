// The document's example, played to the agent.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/support/readable_bytes.h"
#include "tests/system/system_test.h"

using testing_support::hex;
using testing_support::unhex;

namespace system_testing {
namespace {

constexpr const char* DOCUMENT = "docs/bridge-protocol.md";

struct Message {
  bool fromClient;
  std::string bytes;
};

/// The messages in the block behind the heading "Example".
std::vector<Message> exampleOf(const std::string& document) {
  const size_t begin = document.find("```\n", document.find("\n## Example\n")) + 4;
  std::istringstream lines(document.substr(begin, document.find("```\n", begin) - begin));
  std::vector<Message> messages;
  for (std::string line; std::getline(lines, line);) {
    line.erase(std::min(line.find('#'), line.size()));
    for (const bool fromClient : {true, false}) {
      const std::string side = fromClient ? "client" : "agent";
      if (!line.starts_with(side)) continue;
      messages.push_back({fromClient, ""});
      line.erase(0, side.size());
    }
    messages.back().bytes += unhex(line);
  }
  return messages;
}

TEST_F(SystemTest, AnswersAsTheProtocolsDocumentSays) {
  const std::vector<Message> example = exampleOf(sourceFile(DOCUMENT));
  ASSERT_GE(example.size(), 4U);
  start();
  const BridgeClient client(socketPath);
  for (const Message& message : example) {
    if (message.fromClient) {
      client.send(message.bytes);
    } else {
      EXPECT_EQ(hex(client.receive(message.bytes.size())), hex(message.bytes));
    }
  }
  client.endSending();
  EXPECT_TRUE(client.isClosed()) << "nothing follows";
  EXPECT_TRUE(host::exists(settingsPath)) << "the example saves";
}

}  // namespace
}  // namespace system_testing
