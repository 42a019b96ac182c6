#include "editing/record_check.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <sstream>

#include "editing/standing_values.h"
#include "lparams/params/enum_param.h"
#include "tests/agent/bridge/served_module.h"
#include "tests/support/readable_bytes.h"
#include "tests/support/waits_for.h"

namespace editing {
namespace {

using namespace LPARAMS::Server;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr size_t MAX_USERS = 3;  // of the check in ServedModule

constexpr const char* NOT_ONE_LINE =
    " is not legal; expected one line of text without control characters";

template <typename T>
std::string bytesOf(T value) {
  std::string bytes;
  CommandStreamOut out{bytes};
  put(out, value);
  return bytes;
}

/// A member of a group on the bridge, or of the second entry of the user list.
struct Member {
  ParamGroup& group;
  Param& param;
  std::string name;  ///< in messages
};

class RecordCheckTest : public testing::Test {
 protected:
  RecordCheckTest() {
    for (const char* name : {"first", "second"}) {
      settings_.userList.append()->NAME.value = name;
    }
  }

  std::string refusal(const std::string& input) const {
    return module_.check().look(input).refusal;
  }

  void forEachMember(const std::function<void(const Member&)>& visit) {
    for (ParamGroup* group : settings_.groups()) {
      const bool isList = group == &settings_.userList;
      ParamGroup& owner = isList ? *settings_.userList.items[1] : *group;
      const std::string prefix = isList ? "USERS[1]." : std::string(group->name) + ".";
      for (Param* param : owner.wireParams) visit({*group, *param, prefix + param->name});
    }
  }

  /// The legal record of the member's group with these bytes for the member.
  std::string recordWith(const Member& member, const std::string& bytes) {
    std::string record = testing_support::encodeRecord(member.group);
    std::string from;
    CommandStreamOut out{from};
    // Everything from the member to the end of its group stands at the end of the record.
    const auto& owner =
        &member.group == &settings_.userList ? *settings_.userList.items[1] : member.group;
    bool reached = false;
    size_t own = 0;
    for (Param* param : owner.wireParams) {
      reached = reached || param == &member.param;
      if (reached) (void)param->write(out);
      if (param == &member.param) own = from.size();
    }
    return record.replace(record.size() - from.size(), own, bytes);
  }

  void expectLegal(const Member& member, const std::string& bytes) {
    EXPECT_EQ(refusal(recordWith(member, bytes)), "") << member.name << testing_support::hex(bytes);
  }

  void expectRefused(const Member& member, const std::string& bytes, const std::string& why) {
    EXPECT_EQ(refusal(recordWith(member, bytes)), member.name + ": " + why);
  }

  template <typename Numeric, typename T>
  void checkLimits(const Member& member) {
    const auto& param = static_cast<const Numeric&>(member.param);
    const T min = param.min;
    const T max = param.max;
    const std::string expected = " is not legal; expected a whole number from " +
                                 std::to_string(min) + " to " + std::to_string(max);
    expectLegal(member, bytesOf(min));
    expectLegal(member, bytesOf(max));
    const auto below = static_cast<T>(min - 1);  // wraps below 0: then it may be legal
    const auto above = static_cast<T>(max + 1);
    if (min > 0) expectRefused(member, bytesOf(below), std::to_string(below) + expected);
    if (above != 0) expectRefused(member, bytesOf(above), std::to_string(above) + expected);
  }

  agent_testing::ServedModule module_;
  testing_support::Settings settings_;
};

TEST_F(RecordCheckTest, EveryGroupOfTheModulePassesAtItsDefaults) {
  for (ParamGroup* group : settings_.groups()) {
    EXPECT_EQ(refusal(testing_support::encodeRecord(*group)), "") << group->name;
  }
}

TEST_F(RecordCheckTest, EveryLimitOfEveryNumber) {
  int numbers = 0;
  forEachMember([&](const Member& member) {
    if (member.param.getTypeId() == TYPE_USHORT) {
      checkLimits<PortParam, uint16_t>(member);
      ++numbers;
    } else if (member.param.getTypeId() == TYPE_UINT) {
      checkLimits<UIntParam, uint32_t>(member);
      ++numbers;
    }
  });
  EXPECT_GT(numbers, 15);
}

TEST_F(RecordCheckTest, EveryFlag) {
  int flags = 0;
  forEachMember([&](const Member& member) {
    if (member.param.getTypeId() != TYPE_BOOL) return;
    ++flags;
    expectLegal(member, bytesOf('\0'));
    expectLegal(member, bytesOf('\1'));
    expectRefused(member, bytesOf('\2'), "2 is not legal; expected 0 or 1");
    expectRefused(member, bytesOf('\xFF'), "255 is not legal; expected 0 or 1");
  });
  EXPECT_GT(flags, 10);
}

TEST_F(RecordCheckTest, EveryNameOfEveryEnumeration) {
  int enumerations = 0;
  forEachMember([&](const Member& member) {
    if (member.param.getTypeId() != TYPE_INT) return;
    ++enumerations;
    const Variant* const table = static_cast<const EnumParam&>(member.param).variants;
    std::string expected = " is not legal; expected one of ";
    for (const Variant* row = table; row->name != nullptr; ++row) {
      expectLegal(member, bytesOf(row->value));
      expected += (row == table ? "" : ", ") + std::string(row->name);
    }
    for (const int32_t value : {-1, 54321, INT32_MAX, INT32_MIN}) {
      if (findVariant(table, value) != nullptr) continue;
      expectRefused(member, bytesOf(value), std::to_string(value) + expected);
    }
  });
  EXPECT_GT(enumerations, 20);
}

TEST_F(RecordCheckTest, EveryControlCharacterInEveryString) {
  int strings = 0;
  forEachMember([&](const Member& member) {
    const bool secret = member.param.getTypeId() == TYPE_SECRET;
    if (!secret && member.param.getTypeId() != TYPE_STRING) return;
    ++strings;
    for (const std::string legal : {"", " a = b ", "/end=", "\x80\xFF", "caf\xC3\xA9 \"\\|"}) {
      expectLegal(member, bytesOf(legal));
    }
    for (int c = 0; c <= 0x7F; ++c) {
      const bool control = c < 0x20 || c == 0x7F;
      const std::string value = std::string("ab") + static_cast<char>(c);
      const std::string why = refusal(recordWith(member, bytesOf(value)));
      if (!control) {
        EXPECT_EQ(why, "") << member.name << c;
        continue;
      }
      EXPECT_THAT(why, StartsWith(member.name + (secret ? ": the value" : ": \"ab\\")));
      EXPECT_THAT(why, EndsWith(NOT_ONE_LINE));
    }
  });
  EXPECT_GT(strings, 15);
}

TEST_F(RecordCheckTest, Messages) {
  const struct {
    std::string name;
    std::string bytes;
    std::string why;
  } rows[] = {
      {"IKE.EXCHANGE_TIMEOUT", bytesOf(uint32_t{4}),
       "4 is not legal; expected a whole number from 5 to 600"},
      {"IKE.IKE_PORT", bytesOf(uint16_t{0}),
       "0 is not legal; expected a whole number from 1 to 65535"},
      {"LOG.LANGUAGE", bytesOf(int32_t{7}), "7 is not legal; expected one of LOG_LANG_"},
      {"POLICY.PMP_TIMEOUT", bytesOf(uint32_t{4}),
       "4 is not legal; expected a whole number from 5 to 4294967295"},
      {"ADMIN.ADMIN_GROUP", bytesOf(std::string("a\nLOG=")),
       std::string("\"a\\x0aLOG=\"") + NOT_ONE_LINE},
      {"USERS[1].NAME", bytesOf(std::string("\t")), std::string("\"\\x09\"") + NOT_ONE_LINE},
  };
  for (const auto& row : rows) {
    int found = 0;
    forEachMember([&](const Member& member) {
      if (member.name != row.name) return;
      ++found;
      EXPECT_THAT(refusal(recordWith(member, row.bytes)), StartsWith(row.name + ": " + row.why));
    });
    EXPECT_EQ(found, 1) << row.name;
  }
}

TEST_F(RecordCheckTest, ASecretIsNotRepeated) {
  settings_.ikeGroup.QCD_SECRET.value = "open sesame";
  settings_.ikeGroup.EXCHANGE_TIMEOUT.value = 4;
  EXPECT_THAT(refusal(testing_support::encodeRecord(settings_.ikeGroup)), Not(HasSubstr("sesame")));
  settings_.ikeGroup.EXCHANGE_TIMEOUT.value = 5;
  settings_.ikeGroup.QCD_SECRET.value = "open\nsesame";
  EXPECT_EQ(refusal(testing_support::encodeRecord(settings_.ikeGroup)),
            std::string("IKE.QCD_SECRET: the value") + NOT_ONE_LINE);
}

TEST_F(RecordCheckTest, EveryStrictPrefixIsTooShort) {
  settings_.ikeGroup.QCD_SECRET.value = "open sesame";
  for (ParamGroup* group : settings_.groups()) {
    const std::string record = testing_support::encodeRecord(*group);
    const size_t nameSize = testing_support::encodeName(*group).size();
    for (size_t size = 0; size < record.size(); ++size) {
      const std::string subject = size < nameSize ? "the group's name" : group->name;
      const std::string why = refusal(record.substr(0, size));
      ASSERT_THAT(why, StartsWith(subject)) << size;
      ASSERT_THAT(why, HasSubstr(": the record ends here; ")) << size;
      ASSERT_THAT(why, Not(HasSubstr("sesame"))) << size;
    }
    EXPECT_EQ(refusal(record + "x"),
              std::string(group->name) + ": 1 bytes follow the end of the record; expected none");
    EXPECT_EQ(refusal(record + record), std::string(group->name) + ": " +
                                            std::to_string(record.size()) +
                                            " bytes follow the end of the record; expected none");
  }
}

TEST_F(RecordCheckTest, LengthsThatWouldWrap) {
  for (const uint32_t length : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFBu, 0xFFFFFFFFu}) {
    const std::string cutOff = ": the record ends here; ";
    EXPECT_EQ(refusal(bytesOf(length) + "ADMIN"),
              "the group's name" + cutOff + "9 bytes are left, which are too few");
    forEachMember([&](const Member& member) {
      const int type = member.param.getTypeId();
      if (type != TYPE_STRING && type != TYPE_SECRET) return;
      EXPECT_THAT(refusal(recordWith(member, bytesOf(length))), StartsWith(member.name + cutOff));
    });
  }
}

TEST_F(RecordCheckTest, UnknownGroups) {
  const std::string expected = "; expected one of IKE, LOG, UPDATE, POLICY, ADMIN, USERS";
  for (const std::string name : {"", "FOO", "ike", "IKE ", "ROOT", "USER"}) {
    EXPECT_EQ(refusal(bytesOf(name)), "there is no group \"" + name + "\"" + expected);
  }
  EXPECT_EQ(refusal(bytesOf(std::string("a\nb\0", 4))),
            "there is no group \"a\\x0ab\\x00\"" + expected);
}

TEST_F(RecordCheckTest, TooManyUsers) {
  const std::string head = testing_support::encodeName(settings_.userList);
  const std::string expected = " entries are too many; expected at most 3";
  for (const uint32_t count : {4u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    EXPECT_EQ(refusal(head + bytesOf(count)), "USERS: " + std::to_string(count) + expected);
  }
  (void)settings_.userList.append();
  ASSERT_EQ(settings_.userList.items.size(), MAX_USERS);
  EXPECT_EQ(refusal(testing_support::encodeRecord(settings_.userList)), "");
  (void)settings_.userList.append();
  EXPECT_EQ(refusal(testing_support::encodeRecord(settings_.userList)), "USERS: 4" + expected);
}

TEST_F(RecordCheckTest, AnAbsurdCountEndsAtTheFirstEntryThatIsMissing) {
  const RecordCheck check(settings_, 0xFFFFFFFF);
  EXPECT_EQ(
      check.look(testing_support::encodeName(settings_.userList) + bytesOf(0xFFFFFFFFu)).refusal,
      "USERS[0].NAME: the record ends here; 0 bytes are left, which are too few");
}

TEST_F(RecordCheckTest, ATextMayBeAsLongAsTheLimitAndNoLonger) {
  settings_.policyGroup.PSK_NAME.value = std::string(64 * 1024, 'x');
  EXPECT_EQ(refusal(testing_support::encodeRecord(settings_.policyGroup)), "");
  settings_.policyGroup.PSK_NAME.value += 'x';
  EXPECT_EQ(refusal(testing_support::encodeRecord(settings_.policyGroup)),
            "POLICY.PSK_NAME: a text of 65537 bytes is too long; expected at most 65536");
  settings_.ikeGroup.QCD_SECRET.value = std::string(64 * 1024 + 1, 'x');
  EXPECT_EQ(refusal(testing_support::encodeRecord(settings_.ikeGroup)),
            "IKE.QCD_SECRET: a text of 65537 bytes is too long; expected at most 65536");
}

// A settings file may hold what no write may set. It must not refuse every write of its group.
TEST_F(RecordCheckTest, WhatIsThereAndUnchangedPasses) {
  const std::string tab = "a\tb";
  module_.server().POLICY->PSK_NAME.value = tab;
  module_.server().POLICY->PMP_SERVERS.value = std::string(64 * 1024 + 1, 'x');
  settings_.policyGroup.PSK_NAME.value = tab;
  settings_.policyGroup.PMP_SERVERS.value = std::string(64 * 1024 + 1, 'x');
  settings_.policyGroup.PMP_TIMEOUT.value = 77;
  EXPECT_EQ(module_.write(testing_support::encodeRecord(settings_.policyGroup)).result, 1);
  EXPECT_EQ(module_.server().POLICY->PMP_TIMEOUT.value, 77u);

  settings_.policyGroup.PMP_SERVERS.value += 'x';
  EXPECT_THAT(refusal(testing_support::encodeRecord(settings_.policyGroup)),
              StartsWith("POLICY.PMP_SERVERS: a text of 65538 bytes is too long"));
  settings_.policyGroup.PMP_SERVERS.value = "now legal";
  settings_.policyGroup.PMP_IDDATA.value = tab;  // another parameter
  EXPECT_THAT(refusal(testing_support::encodeRecord(settings_.policyGroup)),
              StartsWith("POLICY.PMP_IDDATA: \"a\\x09b\" is not legal"));
  settings_.policyGroup.PMP_IDDATA.value.clear();
  EXPECT_EQ(module_.write(testing_support::encodeRecord(settings_.policyGroup)).result, 1);
  settings_.policyGroup.PSK_NAME.value = "now legal too";
  EXPECT_EQ(module_.write(testing_support::encodeRecord(settings_.policyGroup)).result, 1);
  settings_.policyGroup.PSK_NAME.value = tab;  // gone, so it may not come back
  EXPECT_THAT(refusal(testing_support::encodeRecord(settings_.policyGroup)),
              StartsWith("POLICY.PSK_NAME"));

  module_.server().IKE->QCD_SECRET.value = tab;
  settings_.ikeGroup.QCD_SECRET.value = tab;
  EXPECT_EQ(refusal(testing_support::encodeRecord(settings_.ikeGroup)), "");
  settings_.ikeGroup.QCD_SECRET.value += "\n";
  EXPECT_THAT(refusal(testing_support::encodeRecord(settings_.ikeGroup)),
              StartsWith("IKE.QCD_SECRET"));
}

TEST_F(RecordCheckTest, WhatIsThereOfAUserPassesWhereverTheUserStands) {
  auto& there = module_.server().userList;
  for (const char* name : {"first", "tab\tname"}) {
    LPARAMS::Server::USER_t& user = *LPARAMS::Server::listAdd(there);
    user.NAME.value = name;
    user.PMP_IDDATA.value = std::string(name) + "\t";
  }
  const auto clear = [&] { settings_.userList.destroyEntries(); };
  const auto add = [&](const std::string& name, const std::string& data) {
    USER_t& user = *settings_.userList.append();
    user.NAME.value = name;
    user.PMP_IDDATA.value = data;
  };
  clear();
  add("tab\tname", "tab\tname\t");
  add("new", "");
  add("first", "first\t");
  EXPECT_EQ(refusal(testing_support::encodeRecord(settings_.userList)), "");
  clear();
  add("new", "first\t");
  EXPECT_THAT(refusal(testing_support::encodeRecord(settings_.userList)),
              StartsWith("USERS[0].PMP_IDDATA"));
  clear();
  add("new\tname", "");
  EXPECT_THAT(refusal(testing_support::encodeRecord(settings_.userList)),
              StartsWith("USERS[0].NAME"));
}

TEST_F(RecordCheckTest, AsManyUsersAsAreTherePass) {
  for (size_t i = 0; i < MAX_USERS + 2; ++i) {
    (void)LPARAMS::Server::listAdd(module_.server().userList);
  }
  while (settings_.userList.items.size() < MAX_USERS + 2) (void)settings_.userList.append();
  EXPECT_EQ(refusal(testing_support::encodeRecord(settings_.userList)), "");
  (void)settings_.userList.append();
  EXPECT_EQ(refusal(testing_support::encodeRecord(settings_.userList)),
            "USERS: 6 entries are too many; expected at most 3");
}

TEST_F(RecordCheckTest, WhatIsThereIsLookedAtUnderItsLock) {
  while (settings_.userList.items.size() <= MAX_USERS) (void)settings_.userList.append();
  const std::string record = testing_support::encodeRecord(settings_.userList);
  EXPECT_TRUE(testing_support::waitsFor(module_.server().userList,
                                        [&] { EXPECT_NE(refusal(record), ""); }));
  for (ParamGroup* group : settings_.groups()) {
    EXPECT_TRUE(testing_support::waitsFor(*group, [&] { (void)StandingValues(*group); }));
  }
}

TEST_F(RecordCheckTest, TellsTheSizeOfTheGroupInTheFile) {
  for (ParamGroup* group : settings_.groups()) {
    std::ostringstream text;
    (void)group->save(text, 1);
    EXPECT_EQ(module_.check().look(testing_support::encodeRecord(*group)).textSize,
              text.str().size())
        << group->name;
  }
}

// Each is legal in itself; together they would be more than a start accepts, or a reply holds.
TEST(WholeSettings, MayNotOutgrowTheirLimit) {
  agent_testing::ServedModule module({.maxUsers = 4096});
  const std::string large(64 * 1024, 'x');
  testing_support::Settings settings;
  for (int i = 0; i < 20; ++i) {
    USER_t& user = *settings.userList.append();
    for (StStParam* param : {&user.NAME, &user.LSP_FILE, &user.PMP_SERVERS, &user.PMP_IDDATA,
                             &user.PMP_CERT_SUBJECT, &user.PMP_PSK_NAME}) {
      param->value = large;
    }
  }
  ASSERT_EQ(module.write(testing_support::encodeRecord(settings.userList)).result, 1);
  for (StStParam* param :
       {&settings.policyGroup.SYSTEM_LSP_FROM_FILE, &settings.policyGroup.PMP_SERVERS,
        &settings.policyGroup.PMP_IDDATA, &settings.policyGroup.LOCAL_CERT_SUBJECT,
        &settings.policyGroup.PSK_NAME}) {
    param->value = large;
  }
  ASSERT_EQ(module.write(testing_support::encodeRecord(settings.policyGroup)).result, 1);
  settings.updateGroup.URL.value = large;
  settings.updateGroup.UPDATE_URI.value = large;
  settings.updateGroup.DOWNLOAD_PATH.value = large;
  const bridge::Reply refused = module.write(testing_support::encodeRecord(settings.updateGroup));
  EXPECT_EQ(refused.reason, bridge::Reason::IllegalValue);
  EXPECT_THAT(refused.text, StartsWith("UPDATE: the settings would be a text of 83"));
  EXPECT_THAT(refused.text, EndsWith(" of them for this group; expected at most 8388608"));
  EXPECT_EQ(module.server().UPDATE->URL.value, "");
  // A file may have brought as much; then it may stay, and become less.
  module.server().UPDATE->UPDATE_URI.value = std::string(200 * 1024, 'y');
  EXPECT_EQ(module.write(testing_support::encodeRecord(settings.updateGroup)).result, 1);
  settings.updateGroup.AVAILABLE_UPDATE_NAME.value = "x";
  EXPECT_EQ(module.write(testing_support::encodeRecord(settings.updateGroup)).result, 0);
  settings.updateGroup.DOWNLOAD_PATH.value.clear();
  settings.updateGroup.UPDATE_URI.value.clear();
  EXPECT_EQ(module.write(testing_support::encodeRecord(settings.updateGroup)).result, 1);
  EXPECT_EQ(module.read("USERS").result, 1);
}

}  // namespace
}  // namespace editing
