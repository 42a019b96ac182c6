// The listener that the module registers, byte by byte and slot by slot, as a bridge uses it that
// was built apart from the module.
#include <gmock/gmock.h>

#include <cstring>

#include "tests/catalogue/expected_groups.h"
#include "tests/module/call_log.h"
#include "tests/module/child_process.h"
#include "tests/module/loaded_module.h"
#include "tests/support/object_layout.h"
#include "tests/support/readable_bytes.h"

using LPARAMS::Server::expectedGroup;
using LPARAMS::Server::initially;
using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::bits32or64;
using testing_support::functionInSlot;
using testing_support::offsetIn;

namespace host {
namespace {

using Destructor = void (*)(CommandListener*);
using ExecCommand = int (*)(CommandListener*, BridgeSession&, long, const std::string&,
                            std::string&);
using SessionCallback = void (*)(CommandListener*, BridgeSession*);
using Callback = void (*)(CommandListener*);

class ListenerLayout : public ModuleTest {
 protected:
  template <typename Function>
  Function slot(size_t number) {
    return functionInSlot<Function>(listener, number);
  }

  CommandListener& listener = *platform().listener;
  BridgeSession session;
};

TEST_F(ListenerLayout, TheIdentifierStandsBehindTheTableAndTheRootBehindTheIdentifier) {
  int id = 0;
  std::memcpy(&id, reinterpret_cast<const char*>(&listener) + bits32or64(4, 8), sizeof id);
  EXPECT_EQ(id, 13);
  EXPECT_EQ(offsetIn(listener, root()), bits32or64(8, 16));
}

TEST_F(ListenerLayout, TheDestructorComesFirst) {
  runInChild([&] {  // which leaves without a teardown
    EXPECT_THAT(callsDuring([&] { slot<Destructor>(0)(&listener); }),
                ElementsAre("DelCommandListener of module 13"));
  });
}

TEST_F(ListenerLayout, CommandsAreExecutedBehindTheTwoDestructors) {
  const auto execute = slot<ExecCommand>(2);
  session.number = 7;
  std::string out = "before";
  EXPECT_THAT(
      callsDuring([&] { EXPECT_EQ(execute(&listener, session, 1, framed("ADMIN"), out), 1); }),
      IsEmpty());
  EXPECT_EQ(out, "before" + expectedGroup("ADMIN").record(initially));
  EXPECT_THAT(callsDuring([&] { EXPECT_EQ(execute(&listener, session, 0, framed("X"), out), 0); }),
              ElementsAre("authorise session 7 for module 13 at level 0"));
}

TEST_F(ListenerLayout, TheSessionCallbacksFollowAndDoNothing) {
  const std::string values = execute(READ_GROUP, framed("ADMIN")).output;
  EXPECT_THAT(callsDuring([&] {
                slot<SessionCallback>(3)(&listener, &session);
                slot<SessionCallback>(4)(&listener, &session);
                slot<Callback>(5)(&listener);
                slot<Callback>(6)(&listener);
                slot<SessionCallback>(7)(&listener, &session);
                slot<SessionCallback>(3)(&listener, nullptr);
                slot<SessionCallback>(4)(&listener, nullptr);
                slot<SessionCallback>(7)(&listener, nullptr);
              }),
              IsEmpty());
  EXPECT_EQ(execute(READ_GROUP, framed("ADMIN")).output, values);
}

}  // namespace
}  // namespace host
