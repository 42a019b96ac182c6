// What the client does beyond reading and writing: saves, the state, events.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "tests/client/client_process.h"
#include "tests/client/scripted_agent.h"

namespace client_testing {
namespace {

using Commands = std::vector<std::string>;

TEST(ClientSave, SaysThatItIsDone) {
  ScriptedAgent agent({done()});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "save"}), printed("saved\n"));
  EXPECT_EQ(agent.commands(), Commands{"save"});
}

TEST(ClientSave, SaysSoInJson) {
  ScriptedAgent agent({done()});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "save", "--json"}),
            printed("{\n  \"saved\": true\n}\n"));
}

TEST(ClientSave, SaysWhyItIsNotAndTheStatusSaysOfWhatKindTheReasonIs) {
  const struct {
    bridge::Reason reason;
    int status;
  } ROWS[] = {
      {bridge::Reason::ModuleRefused, 69},  {bridge::Reason::NotAuthorised, 77},
      {bridge::Reason::MalformedInput, 65}, {bridge::Reason::NoSuchModule, 69},
      {bridge::Reason::ModuleFailed, 69},   {bridge::Reason::ReplyTooLarge, 74},
      {bridge::Reason::Conflict, 75},       {bridge::Reason::SaveRefused, 74},
      {bridge::Reason::NoSuchCommand, 69},  {static_cast<bridge::Reason>(999), 69},
  };
  for (const auto& row : ROWS) {
    ScriptedAgent agent({refused("write failed: /var/lib/x\n.bak", row.reason)});
    EXPECT_EQ(runClient({"--socket", agent.socketPath, "save"}),
              failed(row.status, "saving failed: write failed: /var/lib/x\\x0a.bak"));
  }
}

TEST(ClientSave, RefusalWithoutWordsHasItsNumber) {
  ScriptedAgent agent({refused("", bridge::Reason::NotAuthorised)});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "save"}),
            failed(77, "saving failed: the agent gave no reason (2)"));
}

TEST(ClientSave, IsForcedOnlyIfAsked) {
  ScriptedAgent agent({done()});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "save", "--force"}), printed("saved\n"));
  EXPECT_EQ(agent.commands(), Commands{"forced save"});
}

TEST(ClientStatus, PrintsOneLineForEachField) {
  ScriptedAgent agent(
      {done(R"({"changed":true,"degraded":null,"lastFailure":"no\nspace","pid":7})")});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "status"}),
            printed("changed: yes\ndegraded: no\nlastFailure: no\\x0aspace\npid: 7\n"));
  EXPECT_EQ(agent.commands(), Commands{"status"});
}

TEST(ClientStatus, ListsFindingsOnRequest) {
  const std::string state = R"({"findings":3,"findingList":[)"
                            R"({"what":"wrong","line":"7","column":"2","parameter":"IKE.A\n",)"
                            R"("text":"x\u001b","value":"1"},{"what":"missing"}]})";
  const auto printedWith = [](const std::string& answer, std::vector<std::string> command) {
    ScriptedAgent agent({done(answer)});
    command.insert(command.begin(), {"--socket", agent.socketPath});
    return runClient(command);
  };
  EXPECT_EQ(printedWith(state, {"status"}), printed("findings: 3\n"));
  EXPECT_EQ(printedWith(state, {"status", "--findings"}),
            printed("line 7, column 2: IKE.A\\x0a: wrong (text \"x\\x1b\", value \"1\")\n"
                    "missing\nand more: 3 in all\n"));
  EXPECT_EQ(printedWith("{}", {"status", "--findings"}), printed("")) << "of an earlier agent";
}

TEST(ClientStatus, StateThatIsNone) {
  for (const char* state : {"", "{", "[]", "7"}) {
    ScriptedAgent agent({done(state)});
    EXPECT_EQ(runClient({"--socket", agent.socketPath, "status"}),
              failed(69, "the agent's state cannot be read"))
        << state;
  }
}

TEST(ClientStatus, PrintsJson) {
  const auto printedWith = [](std::vector<std::string> command) {
    ScriptedAgent agent({done(R"({"pid":7,"findings":1,"findingList":[{"what":"x"}]})")});
    command.insert(command.begin(), {"--socket", agent.socketPath});
    return nlohmann::json::parse(runClient(command).out);
  };
  EXPECT_EQ(printedWith({"status", "--json"})["pid"], 7);
  EXPECT_EQ(printedWith({"status", "--json", "--findings"}),
            nlohmann::json::parse(R"([{"what":"x"}])"));
}

TEST(ClientStatus, MetricsSayThatTheAgentDoesNotAnswer) {
  Outcome expected =
      failed(69, "cannot reach the agent at /nonexistent: No such file or directory");
  expected.out =
      "# HELP lparams_up Whether the agent answers.\n# TYPE lparams_up gauge\nlparams_up 0\n";
  EXPECT_EQ(runClient({"--socket", "/nonexistent", "status", "--metrics"}), expected);
}

TEST(ClientWatch, PrintsNoticesUntilTheAgentGoes) {
  ScriptedAgent agent([](const Peer& peer) {
    (void)peer.read(bridge::HELLO_SIZE);
    peer.write(bridge::encodeHello());
    (void)peer.read(bridge::encode(bridge::Request(bridge::AgentCommand{"watch", ""})).size());
    peer.write(bridge::encode(done()));
    peer.write(bridge::encode(
        bridge::Notice{.what = bridge::Notice::Saved, .uid = 1000, .pid = 42, .program = "x\n"}));
    peer.write(bridge::encode(bridge::Notice{.what = bridge::Notice::NotSaved, .text = "full"}));
  });
  const Outcome outcome = runClient({"--socket", agent.socketPath, "watch"});
  EXPECT_EQ(outcome.out,
            "1970-01-01T00:00:00.000Z saved   (x\\x0a, uid 1000, pid 42)\n"
            "1970-01-01T00:00:00.000Z not saved: full   (, uid 0, pid 0)\n");
  EXPECT_EQ(outcome.err,
            "lparamsctl: the agent at " + agent.socketPath + " closed the connection\n");
  EXPECT_EQ(outcome.exitCode, 69);
}

TEST(ClientWatch, EndsWhereItsOutputCannotBeWritten) {
  ScriptedAgent agent([](const Peer& peer) {
    (void)peer.read(bridge::HELLO_SIZE);
    peer.write(bridge::encodeHello());
    peer.write(bridge::encode(done()));
    peer.write(bridge::encode(bridge::Notice{.what = bridge::Notice::Saved}));
    peer.readToEnd();
  });
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "watch"}, {.outputPath = "/dev/full"}),
            failed(74, "cannot write the output"));
}

}  // namespace
}  // namespace client_testing
