// What the client does beyond reading and writing: revisions, forced saves, the state, events.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/settings.h"
#include "tests/client/client_process.h"
#include "tests/client/scripted_agent.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"

namespace client_testing {
namespace {

using testing_support::hex;
using testing_support::wireBytes;
using Commands = std::vector<std::string>;

TEST(ClientRevision, WriteStatesTheRevisionOfTheRead) {
  client::Settings settings;
  bridge::Reply read = done(wireBytes(settings.adminGroup));
  read.revision = 7;
  ScriptedAgent agent({read, done()});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "set", "ADMIN.ADMIN_GROUP=x"}), printed(""));
  settings.adminGroup.ADMIN_GROUP.value = "x";
  EXPECT_EQ(agent.commands(), (Commands{"read ADMIN", "write ADMIN at revision 7 " +
                                                          hex(wireBytes(settings.adminGroup))}));
}

TEST(ClientRevision, ConflictIsTold) {
  client::Settings settings;
  ScriptedAgent agent({done(wireBytes(settings.adminGroup)),
                       refused("ADMIN has changed; read it again", bridge::Reason::Conflict)});
  EXPECT_EQ(
      runClient({"--socket", agent.socketPath, "set", "ADMIN.ADMIN_GROUP=x"}),
      failed(1, "writing ADMIN failed: ADMIN has changed; read it again; not written: ADMIN"));
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
              failed(3, "the agent's state cannot be read"))
        << state;
  }
}

TEST(ClientWatch, PrintsEventsUntilTheAgentGoes) {
  ScriptedAgent agent([](const Peer& peer) {
    (void)peer.read(bridge::HELLO_SIZE);
    peer.write(bridge::encodeHello());
    (void)peer.read(bridge::FRAME_HEAD_SIZE + 1);
    peer.write(bridge::encode(done()));
    peer.write(bridge::encode(bridge::Event{"IKE", 3, 1000, 42}));
    peer.write(bridge::encode(bridge::Event{"LOG", 2, 0, 43}));
  });
  const Outcome outcome = runClient({"--socket", agent.socketPath, "watch"});
  EXPECT_EQ(outcome.out, "IKE revision 3 by uid 1000 pid 42\nLOG revision 2 by uid 0 pid 43\n");
  EXPECT_EQ(outcome.exitCode, 3);
}

}  // namespace
}  // namespace client_testing
