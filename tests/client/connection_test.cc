// What the client makes of agents that are not there, not what they seem or not well.
#include "client/connection.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "bridge/named_values.h"

#include "tests/client/client_process.h"
#include "tests/client/scripted_agent.h"
#include "tests/support/readable_bytes.h"

namespace client_testing {
namespace {

using testing_support::unhex;

Outcome runSave(const std::string& socketPath) {
  return runClient({"--socket", socketPath, "--timeout", "60", "save"});
}

Outcome cannotReach(const std::string& socketPath, const std::string& reason) {
  return failed(69, "cannot reach the agent at " + socketPath + ": " + reason);
}

TEST(ClientConnection, NoSocket) {
  EXPECT_EQ(runSave("/nonexistent/agent.sock"),
            cannotReach("/nonexistent/agent.sock", "No such file or directory"));
  EXPECT_EQ(runSave("/dev/null"), cannotReach("/dev/null", "Connection refused"));
  EXPECT_EQ(runSave("/non\nexistent"),
            cannotReach("/non\\x0aexistent", "No such file or directory"));
  EXPECT_EQ(runSave("/" + std::string(200, 'x')),
            cannotReach("/" + std::string(200, 'x'), "File name too long"));
}

TEST(ClientConnection, NobodyListens) {
  std::string path;
  {
    ScriptedAgent agent({done()});
    path = agent.socketPath;
    EXPECT_EQ(runSave(path), printed("saved\n"));
    EXPECT_TRUE(agent.wasReached());
    EXPECT_EQ(runSave(path), cannotReach(path, "Connection refused"));
  }
  EXPECT_EQ(runSave(path), cannotReach(path, "No such file or directory"));
}

TEST(ClientConnection, SocketOfTheEnvironment) {
  ScriptedAgent agent({done()});
  EXPECT_EQ(runClient({"save"}, {.variable = "LPARAMS_SOCKET=" + agent.socketPath}),
            printed("saved\n"));
}

TEST(ClientConnection, OptionGoesBeforeTheEnvironment) {
  ScriptedAgent agent({done()});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "save"},
                      {.variable = "LPARAMS_SOCKET=/nonexistent"}),
            printed("saved\n"));
}

/// What the client says of an agent that reads the hello, answers with these bytes and closes.
Outcome answeredWith(const std::string& bytes, std::string& agentName) {
  ScriptedAgent agent([&bytes](const Peer& peer) {
    (void)peer.read(bridge::HELLO_SIZE);
    peer.write(bytes);
  });
  agentName = "the agent at " + agent.socketPath;
  return runSave(agent.socketPath);
}

struct HelloRow {
  const char* bytes;
  const char* complaint;
};

const HelloRow HELLO_ROWS[] = {
    {"", "closed the connection"},
    {"4C 50 42 52", "closed the connection"},
    {"4C 50 42 52 01 00 00", "closed the connection"},
    {"6C 50 42 52 01 00 00 00", "does not speak the bridge protocol"},
    {"48 54 54 50 2F 31 2E 31 20 34 30 30", "does not speak the bridge protocol"},
    {"4C 50 42 52 00 00 00 00", "speaks version 0 of the bridge protocol, this program version 1"},
    {"4C 50 42 52 02 00 00 00", "speaks version 2 of the bridge protocol, this program version 1"},
    {"4C 50 42 52 FF FF FF FF",
     "speaks version 4294967295 of the bridge protocol, this program version 1"},
};

TEST(ClientConnection, HelloThatIsNotTheRightOne) {
  for (const HelloRow& row : HELLO_ROWS) {
    std::string agentName;
    const Outcome outcome = answeredWith(unhex(row.bytes), agentName);
    EXPECT_EQ(outcome, failed(69, agentName + " " + row.complaint)) << row.bytes;
  }
}

/// The same for one that answers the first command with these bytes.
Outcome repliedWith(const std::string& bytes, std::string& agentName) {
  ScriptedAgent agent([&bytes](const Peer& peer) {
    (void)peer.read(bridge::HELLO_SIZE);
    peer.write(bridge::encodeHello());
    (void)peer.read(bridge::decodeFrameHead(peer.read(bridge::FRAME_HEAD_SIZE)));
    peer.write(bytes);
  });
  agentName = "the agent at " + agent.socketPath;
  return runSave(agent.socketPath);
}

const HelloRow REPLY_ROWS[] = {
    {"00 00 00 00", "sent a message that cannot be read"},
    {"01 00 00 00 07", "sent a message that cannot be read"},
    {"05 00 00 00 81 01 00 00 00", "sent a message that cannot be read"},
    {"15 00 00 00 81 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00",
     "sent a message that cannot be read"},
    {"15 00 00 00 81 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 FF FF FF FF",
     "sent a message that cannot be read"},
    {"11 00 00 00 82 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00",
     "sent an event that nobody has asked for"},
    {"01 00 00 01", "announced a message of 16777217 bytes, which is too long"},
    {"FF FF FF FF", "announced a message of 4294967295 bytes, which is too long"},
};

TEST(ClientConnection, ReplyThatIsNone) {
  for (const HelloRow& row : REPLY_ROWS) {
    std::string agentName;
    const Outcome outcome = repliedWith(unhex(row.bytes), agentName);
    EXPECT_EQ(outcome, failed(69, agentName + " " + row.complaint)) << row.bytes;
  }
}

TEST(ClientConnection, ReplyThatIsCutOff) {
  const std::string reply = bridge::encode(refused("no"));
  for (size_t size = 0; size < reply.size(); ++size) {
    std::string agentName;
    const Outcome outcome = repliedWith(reply.substr(0, size), agentName);
    EXPECT_EQ(outcome, failed(69, agentName + " closed the connection")) << size;
  }
  std::string agentName;
  EXPECT_EQ(repliedWith(reply, agentName), failed(69, "saving failed: no"));
}

TEST(ClientConnection, ReplyThatIsCutOffThoughTheLongestIsAnnounced) {
  std::string agentName;
  const Outcome outcome = repliedWith(unhex("00 00 00 01 01"), agentName);
  EXPECT_EQ(outcome, failed(69, agentName + " closed the connection"));
}

TEST(ClientConnection, ValuesCataloguesAndStatesThatAreNone) {
  const struct {
    std::vector<std::string> command;
    const char* complaint;
  } ROWS[] = {
      {{"get", "A.B"}, "the agent's values cannot be read"},
      {{"set", "A.B=1"}, "the agent's values cannot be read"},
      {{"list"}, "the agent's catalogue cannot be read"},
      {{"status"}, "the agent's state cannot be read"},
  };
  for (const auto& row : ROWS) {
    for (const char* output : {"x", "{", "{}x"}) {
      ScriptedAgent agent({done(output)});
      std::vector<std::string> arguments = {"--socket", agent.socketPath};
      arguments.insert(arguments.end(), row.command.begin(), row.command.end());
      EXPECT_EQ(runClient(arguments), failed(69, row.complaint)) << output;
    }
  }
}

TEST(ClientConnection, AgentThatStaysSilent) {
  ScriptedAgent agent([](const Peer& peer) { peer.readToEnd(); });
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "--timeout", "1", "save"}),
            failed(75, "the agent at " + agent.socketPath + " did not answer within 1 s"));
}

TEST(ClientConnection, AgentThatKnowsNoNames) {
  ScriptedAgent agent({refused("the frame holds no request", bridge::Reason::MalformedFrame)});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "get", "IKE.IKE_PORT"}),
            failed(69,
                   "reading failed: the frame holds no request; the agent may be an earlier "
                   "version"));
}

TEST(ClientConnection, CommandThatIsTooLongForTheBridgeIsNotSent) {
  ScriptedAgent agent({done()});
  const std::string longText(bridge::MAX_FRAME_SIZE, 'x');
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "set", "-"}, {.in = "A.B=" + longText}),
            failed(65,
                   "the command is longer than the 16777216 bytes that the bridge takes\n"
                   "nothing was written"));
  EXPECT_TRUE(agent.commands().empty());
}

TEST(ClientConnection, ReplyInSmallPieces) {
  const bridge::NamedValues values{{}, {{.name = "ADMIN.ADMIN_GROUP", .running = "admin"}}};
  ScriptedAgent agent([&](const Peer& peer) {
    (void)peer.read(bridge::HELLO_SIZE);
    for (const char byte : bridge::encodeHello() + bridge::encode(done(bridge::encode(values)))) {
      peer.write({byte});
    }
    peer.readToEnd();
  });
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "get", "ADMIN.ADMIN_GROUP"}),
            printed("admin\n"));
}

}  // namespace
}  // namespace client_testing
