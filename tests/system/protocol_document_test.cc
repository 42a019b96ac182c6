// The document's example, played to the agent.
#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "agent/bridge/limits.h"
#include "bridge/apply.h"
#include "bridge/history.h"
#include "bridge/named_values.h"
#include "editing/record_check.h"
#include "lparams/values/values.h"
#include "tests/support/readable_bytes.h"
#include "tests/system/system_test.h"

using testing_support::hex;
using testing_support::unhex;

namespace system_testing {
namespace {

constexpr const char* DOCUMENT = "docs/bridge-protocol.md";

constexpr size_t REVISION_SIZE = 8;

struct Message {
  bool fromClient;
  std::string bytes;
  std::optional<size_t> revisionAt = {};  ///< where "rr" stands for the bytes that the agent says
  std::set<size_t> anyAt = {};            ///< where "xx" stands for any byte
};

/// Replaces each of the words by "00". Returns where in the line's bytes they stood.
std::vector<size_t> replaceWords(std::string& line, const std::string& word) {
  std::vector<size_t> places;
  for (size_t i = 0; (i = line.find(word, i)) != std::string::npos; line.replace(i, 2, "00")) {
    places.push_back(unhex(line.substr(0, i)).size());
  }
  return places;
}

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
    Message& message = messages.back();
    if (const auto at = replaceWords(line, "rr"); !at.empty()) {
      message.revisionAt = message.bytes.size() + at.front();
    }
    for (const size_t at : replaceWords(line, "xx"))
      message.anyAt.insert(message.bytes.size() + at);
    message.bytes += unhex(line);
  }
  return messages;
}

TEST(ProtocolDocument, StatesTheLimits) {
  using std::to_string;
  // In the largest unit that tells it to the byte.
  const auto size = [](size_t bytes) {
    if (bytes % agent::MEBIBYTE == 0) return to_string(bytes / agent::MEBIBYTE) + " MiB";
    return bytes % 1024 == 0 ? to_string(bytes / 1024) + " KiB" : to_string(bytes) + " bytes";
  };
  const auto& sessions = agent::SESSION_LIMITS;
  const auto& memory = agent::MEMORY_LIMITS;
  const std::string rows[] = {
      "| frame, either way | " + size(bridge::MAX_FRAME_SIZE) + " |",
      "| output of a reply | " + size(bridge::MAX_FRAME_SIZE) + " less " +
          size(bridge::MAX_FRAME_SIZE - bridge::MAX_REPLY_OUTPUT) + " |",
      "| sessions | " + to_string(sessions.all) + "; of one user " + to_string(sessions.oneUser) +
          " |",
      "| requests and replies under way, of all sessions | " + size(memory.all) + "; of one user " +
          size(memory.oneUser) + " |",
      "the last " + to_string(sessions.all - sessions.others) + " sessions and " +
          size(memory.all - memory.others) + " are\ntheirs alone.",
      "at most " + size(memory.free) + " are not counted",
      "taking a reply | " + to_string(agent::CLIENT_TIMEOUT.count()) +
          " s, while the agent stops " + to_string(agent::CLIENT_TIMEOUT_AT_STOP.count()) +
          " s; noticed up to " + to_string(agent::CLOCK_TICK.count()) + " s later |",
      "leaves " + to_string(agent::MAX_PENDING) + " events and notices, or " +
          size(agent::MAX_PENDING_EVENTS) + " of them, untaken is closed",
      "changes, at most " + size(bridge::MAX_NOTICED_CHANGES) + " |",
      "a parameter with a value of over " + to_string(bridge::MAX_NOTICED_VALUE) + " bytes",
      "cut off after " + to_string(bridge::MAX_NOTICED_TEXT) + " bytes",
      "text (" + size(LPARAMS::Server::MAX_TEXT_SIZE) + "), the number of users (`--max-users`, " +
          to_string(LPARAMS::Server::MAX_USERS) + ")",
      "would have (" + size(editing::RecordCheck::MAX_SETTINGS_TEXT) + ")",
      "at most " + to_string(bridge::MAX_NAMED_ITEMS) + " names or steps",
      "unsigned, at most " + to_string(bridge::MAX_CONFIRM_SECONDS) + "; 0 if they stay",
      "a string of at most " + to_string(bridge::MAX_SAVE_MESSAGE) + " bytes, which counts",
  };
  const std::string document = sourceFile(DOCUMENT);
  for (const std::string& row : rows) EXPECT_NE(document.find(row), std::string::npos) << row;
}

TEST_F(SystemTest, AnswersAsTheProtocolsDocumentSays) {
  const std::vector<Message> example = exampleOf(sourceFile(DOCUMENT));
  ASSERT_GE(example.size(), 4U);
  start();
  ASSERT_EQ(prctl(PR_SET_NAME, "example"), 0);
  const BridgeClient client(socketPath);
  std::set<std::string> revisions;
  std::string revision;  // the agent's last
  for (const Message& message : example) {
    std::string bytes = message.bytes;
    if (message.fromClient) {
      if (message.revisionAt) bytes.replace(*message.revisionAt, REVISION_SIZE, revision);
      client.send(bytes);
      continue;
    }
    const std::string received = client.receive(bytes.size());
    if (message.revisionAt) {
      revision = received.substr(*message.revisionAt, REVISION_SIZE);
      bytes.replace(*message.revisionAt, REVISION_SIZE, revision);
      revisions.insert(revision);
    }
    ASSERT_EQ(received.size(), bytes.size());
    for (const size_t at : message.anyAt) bytes[at] = received[at];
    EXPECT_EQ(hex(received), hex(bytes));
  }
  EXPECT_EQ(revisions.size(), 2U) << "one that was read, one after the write";
  client.endSending();
  EXPECT_TRUE(client.isClosed()) << "nothing follows";
  EXPECT_TRUE(host::exists(settingsPath)) << "the example saves";
}

}  // namespace
}  // namespace system_testing
