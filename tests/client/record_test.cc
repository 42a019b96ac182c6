#include "client/record.h"

#include <gtest/gtest.h>

#include <string>

#include "client/settings.h"
#include "tests/catalogue/expected_groups.h"
#include "tests/client/failure_message.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"

namespace client {
namespace {

using namespace LPARAMS::Server;

using client_testing::failureOf;
using testing_support::hex;
using testing_support::unhex;
using testing_support::wireBytes;

std::string decoding(LPARAMS::Server::ParamGroup& group, const std::string& record) {
  return failureOf([&] { decodeRecord(group, record); });
}

TEST(ClientRecord, NameIsFramed) {
  const Settings settings;
  EXPECT_EQ(hex(encodeName(settings.ikeGroup)), "03 00 00 00 49 4B 45");
}

TEST(ClientRecord, FollowsTheName) {
  Settings settings;
  settings.adminGroup.SESSION_EXPTIME.value = 0x1234;
  EXPECT_EQ(hex(encodeRecord(settings.adminGroup)),
            "05 00 00 00 41 44 4D 49 4E " + hex(expectedGroup("ADMIN").record(initiallyBut(
                                                {{"SESSION_EXPTIME", {"", "34 12 00 00"}}}))));
}

TEST(ClientRecord, FillsTheGroup) {
  Settings settings;
  EXPECT_EQ(decoding(settings.adminGroup, expectedGroup("ADMIN").record(initiallyBut(
                                              {{"SESSION_EXPTIME", {"", "07 00 00 00"}},
                                               {"LOGIN_ON_SAVE_TOKEN_PASSWORD", {"", "00"}},
                                               {"ADMIN_GROUP", {"", "03 00 00 00 6F 70 73"}}}))),
            "no failure");
  EXPECT_EQ(settings.adminGroup.SESSION_EXPTIME.value, 7U);
  EXPECT_FALSE(settings.adminGroup.LOGIN_ON_SAVE_TOKEN_PASSWORD.value);
  EXPECT_EQ(settings.adminGroup.ADMIN_GROUP.value, "ops");
}

/// Of what begins like the record, the group takes nothing but the record itself.
void expectOnly(const std::string& record, LPARAMS::Server::ParamGroup& group) {
  const std::string refusal = std::string("3: the agent's record of ") + group.name + " is ";
  for (size_t size = 0; size < record.size(); ++size) {
    EXPECT_EQ(decoding(group, record.substr(0, size)), refusal + "too short");
  }
  EXPECT_EQ(decoding(group, record), "no failure");
  EXPECT_EQ(wireBytes(group), record);
  EXPECT_EQ(decoding(group, record + "abc"), refusal + "too long; bytes left over: 3");
}

TEST(ClientRecord, IsRefusedIfItIsNotExactlyOne) {
  Settings filled;
  listAdd(filled.userList)->NAME.value = "anna";
  listAdd(filled.userList)->NAME.value = "boris";
  Settings settings;
  for (size_t i = 0; i < filled.groups().size(); ++i) {
    expectOnly(wireBytes(*filled.groups()[i]), *settings.groups()[i]);
  }
}

TEST(ClientRecord, AnnouncesMoreUsersThanItHolds) {
  Settings settings;
  EXPECT_EQ(decoding(settings.userList, unhex("FF FF FF FF")),
            "3: the agent's record of USERS is too short");
  EXPECT_EQ(decoding(settings.userList, unhex("01 00 00 00 FF FF FF FF")),
            "3: the agent's record of USERS is too short");
}

}  // namespace
}  // namespace client
