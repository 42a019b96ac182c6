// The order of fields and virtual functions of the settings root and of the module's listener.
#include <gtest/gtest.h>

#include <type_traits>

#include "lparams/factory.h"
#include "lparams/interface/access_levels.h"
#include "lparams/interface/commands.h"
#include "tests/support/fake_platform.h"
#include "tests/support/object_layout.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

TEST(RootLayout, TheVirtualFunctionsOfTheRootFollowThoseOfAGroup) {
  EXPECT_EQ(slotOf(static_cast<bool (Server_t::*)(std::string*)>(&Server_t::save)), 9u);
  EXPECT_EQ(slotOf(static_cast<bool (Server_t::*)(LoadLog*)>(&Server_t::load)), 10u);
  EXPECT_EQ(slotOf(&Server_t::isChanged), 11u);
}

TEST(RootLayout, EveryGroupIsFollowedByItsPointer) {
  const Server_t root;
  size_t end = sizeof(ParamGroup);
  const auto expectNext = [&](const auto& group, const auto& pointer) {
    EXPECT_EQ(offsetIn(root, group), end);
    EXPECT_EQ(offsetIn(root, pointer), end + sizeof group);
    EXPECT_EQ(pointer, &group);
    end = offsetIn(root, pointer) + sizeof pointer;
  };
  expectNext(root.ikeGroup, root.IKE);
  expectNext(root.logGroup, root.LOG);
  expectNext(root.updateGroup, root.UPDATE);
  expectNext(root.policyGroup, root.POLICY);
  expectNext(root.adminGroup, root.ADMIN);
  expectNext(root.userList, root.USERS);
  EXPECT_EQ(offsetIn(root, root.saveHook), end);
  EXPECT_EQ(offsetIn(root, root.rawSettings), end + sizeof(void*));
}

TEST(RootLayout, TheEntriesOfTheUserListFollowItsGroup) {
  const ParamVector<USER_t> users("USERS");
  EXPECT_EQ(offsetIn(users, users.items), sizeof(ParamGroup));
  EXPECT_EQ(sizeof users, bits32or64(80, 152));
}

TEST(RootLayout, VirtualFunctionsOfAListener) {
  EXPECT_EQ(slotOf(&CommandListener::ExecCommand), 2u);
  EXPECT_EQ(slotOf(&CommandListener::OnOpenSession), 3u);
  EXPECT_EQ(slotOf(&CommandListener::OnCloseSession), 4u);
  EXPECT_EQ(slotOf(&CommandListener::OnOpenFirstSession), 5u);
  EXPECT_EQ(slotOf(&CommandListener::OnCloseLastSession), 6u);
  EXPECT_EQ(slotOf(&CommandListener::OnCloseLastSessionWithUser), 7u);
  EXPECT_EQ(slotOf(&Factory::ExecCommand), 2u);
}

template <typename Operation, typename Signature>
constexpr bool hasSignature = std::is_same_v<Operation, Signature>;

static_assert(std::has_virtual_destructor_v<CommandListener>);
static_assert(std::is_abstract_v<CommandListener> && !std::is_abstract_v<Factory>);
static_assert(
    hasSignature<decltype(&CommandListener::ExecCommand),
                 int (CommandListener::*)(BridgeSession&, long, const std::string&, std::string&)>);
static_assert(hasSignature<decltype(&CommandListener::OnOpenSession),
                           void (CommandListener::*)(BridgeSession*)>);
static_assert(hasSignature<decltype(&CommandListener::OnCloseSession),
                           void (CommandListener::*)(BridgeSession*)>);
static_assert(
    hasSignature<decltype(&CommandListener::OnOpenFirstSession), void (CommandListener::*)()>);
static_assert(
    hasSignature<decltype(&CommandListener::OnCloseLastSession), void (CommandListener::*)()>);
static_assert(hasSignature<decltype(&CommandListener::OnCloseLastSessionWithUser),
                           void (CommandListener::*)(BridgeSession*)>);
// The module overrides the destructor and ExecCommand only: the callbacks are still those of the
// base.
static_assert(
    hasSignature<decltype(&Factory::ExecCommand),
                 int (Factory::*)(BridgeSession&, long, const std::string&, std::string&)>);
static_assert(
    hasSignature<decltype(&Factory::OnOpenSession), decltype(&CommandListener::OnOpenSession)>);
static_assert(
    hasSignature<decltype(&Factory::OnCloseSession), decltype(&CommandListener::OnCloseSession)>);
static_assert(hasSignature<decltype(&Factory::OnOpenFirstSession),
                           decltype(&CommandListener::OnOpenFirstSession)>);
static_assert(hasSignature<decltype(&Factory::OnCloseLastSession),
                           decltype(&CommandListener::OnCloseLastSession)>);
static_assert(hasSignature<decltype(&Factory::OnCloseLastSessionWithUser),
                           decltype(&CommandListener::OnCloseLastSessionWithUser)>);
static_assert(hasSignature<decltype(CommandListener::moduleId), ModuleIdType>);
static_assert(hasSignature<decltype(Factory::server), Server_t>);

TEST(RootLayout, FieldsOfTheListener) {
  ASSERT_EQ(fakePlatform().listeners.size(), 1u);
  const auto& factory = static_cast<const Factory&>(*fakePlatform().listeners.front());
  EXPECT_EQ(offsetIn(factory, factory.moduleId), sizeof(void*));
  EXPECT_EQ(offsetIn(factory, factory.server), 2 * sizeof(void*));
  EXPECT_EQ(&factory.server, server);
  static_assert(sizeof(ModuleIdType) == sizeof(int));
}

// The numbers that clients and the bridge's configuration rely on.
static_assert(WRITE_GROUP == 0 && READ_GROUP == 1 && SAVE == 2);
static_assert(WRITE_ACCESS == 0 && SAVE_ACCESS == 2);
static_assert(LPARAMS_MODULE_ID == 13);

template <typename... T>
constexpr bool neitherCopyableNorMovable = ((!std::is_copy_constructible_v<T> &&
                                             !std::is_move_constructible_v<T> &&
                                             !std::is_copy_assignable_v<T> &&
                                             !std::is_move_assignable_v<T>)&&...);

static_assert(neitherCopyableNorMovable<IKE_t, LOG_t, UPDATE_t, POLICY_t, ADMIN_t, USER_t,
                                        ParamVector<USER_t>, Server_t, CommandListener, Factory>);

}  // namespace
}  // namespace LPARAMS::Server
