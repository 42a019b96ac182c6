#include "lparams/params/param_group.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"
#include "tests/params/load_rows.h"
#include "tests/support/param_forms.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A member that does what the test says, and says that it was called.
class ProgrammedParam : public Param {
 public:
  ProgrammedParam(ParamGroup& group, const char* name, std::string& calls)
      : Param(name), calls_(calls) {
    group.add(*this);
  }

  int getTypeId() const override { return 99; }
  bool save(std::ostream& os, int indent) override {
    (void)Param::save(os, indent);
    os << "\n";
    return call("save");
  }
  bool load(std::istream&) override { return call("load"); }
  bool write(CommandStreamOut& out) override {
    out.out += name;
    return call("write");
  }
  bool read(CommandStreamIn&) override { return call("read"); }

  bool answer = true;

 private:
  bool call(const char* operation) {
    calls_.append(name).append(".").append(operation).append(" ");
    return answer;
  }

  std::string& calls_;
};

/// Three programmed members; the second one fails.
class FailingGroupTest : public testing::Test {
 protected:
  FailingGroupTest() { second.answer = false; }

  std::string calls;
  ParamGroup group{"GROUP"};
  ProgrammedParam first{group, "FIRST", calls};
  ProgrammedParam second{group, "SECOND", calls};
  ProgrammedParam third{group, "THIRD", calls};
};

TEST_F(FailingGroupTest, SaveStopsAtTheFirstMemberThatFailsWithoutAnEndLine) {
  std::ostringstream os;
  EXPECT_FALSE(group.save(os, 0));
  EXPECT_EQ(os.str(), "/GROUP=\n    FIRST=\n    SECOND=\n");
  EXPECT_EQ(calls, "FIRST.save SECOND.save ");
}

TEST_F(FailingGroupTest, LoadOfAMemberThatFailsIsReportedAndEndsTheLoad) {
  ActiveLoadLog log;
  EXPECT_FALSE(loadText(group, "\nFIRST=SECOND=THIRD=end=\n"));
  EXPECT_EQ(calls, "FIRST.load SECOND.load ");
  EXPECT_THAT(log.reports, ElementsAre("paramFailed(\"SECOND\", GROUP)"));
}

TEST_F(FailingGroupTest, WithoutALoadLogAFailedMemberEndsTheLoadAllTheSame) {
  EXPECT_FALSE(loadText(group, "\nFIRST=SECOND=THIRD=end=\n"));
  EXPECT_EQ(calls, "FIRST.load SECOND.load ");
}

TEST_F(FailingGroupTest, WriteStopsAtTheFirstMemberThatFails) {
  std::string bytes;
  CommandStreamOut out{bytes};
  EXPECT_FALSE(group.write(out));
  EXPECT_EQ(bytes, "FIRSTSECOND");
}

TEST_F(FailingGroupTest, ReadStopsAtTheFirstMemberThatFails) {
  const ReadResult read = readBytes(group, "");
  EXPECT_FALSE(read.result);
  EXPECT_EQ(read.thrown, "");
  EXPECT_EQ(calls, "FIRST.read SECOND.read ");
}

/// Two numbers and a text, the text in the file only, and an inner group with a number.
class ParamGroupTest : public testing::Test {
 protected:
  ParamGroupTest() {
    group.add(inner);
    calls = 0;
  }

  static void countCall(int) { ++calls; }
  static inline int calls = 0;

  ParamGroup inner{"INNER"};
  UIntParam depth{inner, "DEPTH", Default{3}, Range{0, 9}};
  ParamGroup group{"GROUP"};
  UIntParam size{group, "SIZE", Default{1}, Range{0, 100}};
  StStParam text{group, "TEXT", "a b", FileOnly};
  PortParam port{group, "PORT", Default{500}, Range{1, 65535}};
};

TEST_F(ParamGroupTest, MembersAreInTheListsInTheOrderOfTheirConstruction) {
  EXPECT_THAT(group.fileParams, ElementsAre(&size, &text, &port, &inner));
  EXPECT_THAT(group.wireParams, ElementsAre(&size, &port, &inner));
  EXPECT_THAT(group.observers, IsEmpty());
}

TEST_F(ParamGroupTest, AnEmptyGroupSavesItsHeadAndItsEnd) {
  ParamGroup empty("EMPTY");
  EXPECT_EQ(savedText(empty), "/EMPTY=\nend=\n");
  EXPECT_EQ(savedText(empty, 2), "        /EMPTY=\n        end=\n");
  EXPECT_EQ(wireBytes(empty), "");
  EXPECT_TRUE(readBytes(empty, "").result);
}

TEST_F(ParamGroupTest, SaveIndentsMembersByOneLevelMore) {
  EXPECT_EQ(savedText(group),
            "/GROUP=\n"
            "    SIZE=1\n"
            "    TEXT=a b\n"
            "    PORT=500\n"
            "    /INNER=\n"
            "        DEPTH=3\n"
            "    end=\n"
            "end=\n");
  EXPECT_EQ(savedText(inner, 1), "    /INNER=\n        DEPTH=3\n    end=\n");
}

TEST_F(ParamGroupTest, EveryLineIsFlushed) {
  class FlushCounter : public std::stringbuf {
   public:
    int flushes = 0;

   private:
    int sync() override {
      ++flushes;
      return 0;
    }
  } buffer;
  std::ostream os(&buffer);
  EXPECT_TRUE(group.save(os, 0));
  EXPECT_EQ(buffer.flushes, 8);
}

TEST_F(ParamGroupTest, TheRecordOnTheWireIsThePlainConcatenationOfTheWireMembers) {
  EXPECT_EQ(hex(wireBytes(group)), "01 00 00 00 F4 01 03 00 00 00");
}

TEST_F(ParamGroupTest, WriteAppendsToTheReply) {
  std::string bytes = "x";
  CommandStreamOut out{bytes};
  EXPECT_TRUE(inner.write(out));
  EXPECT_EQ(hex(bytes), "78 03 00 00 00");
}

TEST_F(ParamGroupTest, ReadTakesTheMembersInOrderAndLeavesTheRestOfTheStream) {
  const ReadResult read = readBytes(group, unhex("02 00 00 00 03 00 04 00 00 00 FF FF"));
  EXPECT_TRUE(read.result);
  EXPECT_EQ(read.position, 10u);
  EXPECT_EQ(size.value, 2u);
  EXPECT_EQ(text.value, "a b");
  EXPECT_EQ(port.value, 3);
  EXPECT_EQ(depth.value, 4u);
}

TEST_F(ParamGroupTest, AStreamThatEndsInTheThirdMemberThrowsAndTheFirstTwoAreChanged) {
  EXPECT_EQ(readBytes(group, unhex("02 00 00 00 03 00 04 00 00")).thrown, "CommandStreamError");
  EXPECT_EQ(size.value, 2u);
  EXPECT_EQ(port.value, 3);
  EXPECT_EQ(depth.value, 3u);
}

TEST_F(ParamGroupTest, GetParamComparesWholeNamesExactly) {
  EXPECT_EQ(group.getParam("SIZE"), &size);
  EXPECT_EQ(group.getParam("TEXT"), &text) << "in the file only, and found all the same";
  EXPECT_EQ(group.getParam("INNER"), &inner);
  using namespace std::string_literals;
  for (const std::string& name : {"size"s, "SIZ"s, "SIZE "s, "SIZES"s, ""s, "SIZE\0"s, "DEPTH"s}) {
    EXPECT_EQ(group.getParam(name), nullptr) << inQuotes(name);
  }
}

TEST_F(ParamGroupTest, GetParamTakesTheFirstOfTwoEqualNames) {
  UIntParam second(group, "SIZE", Default{0}, Range{0, 1});
  EXPECT_EQ(group.getParam("SIZE"), &size);
}

TEST_F(ParamGroupTest, GetParamSearchesTheFileMembers) {
  group.fileParams.remove(&size);
  EXPECT_EQ(group.getParam("SIZE"), nullptr);
}

TEST_F(ParamGroupTest, TheGroupNeverCallsItsObserversItself) {
  group.observers.push_back(countCall);
  group.clear();
  (void)savedText(group);
  (void)wireBytes(group);
  EXPECT_TRUE(readBytes(group, wireBytes(group)).result);
  EXPECT_TRUE(loadText(group, "end=\n"));
  EXPECT_EQ(calls, 0);
}

TEST_F(ParamGroupTest, LoadCallsClearBeforeItReads) {
  struct Clearing : ParamGroup {
    Clearing() : ParamGroup("CLEARING") {}
    void clear() override { count.value = 0; }
    UIntParam count{*this, "COUNT", Default{1}, Range{0, 9}};
    UIntParam other{*this, "OTHER", Default{1}, Range{0, 9}};
  } clearing;
  EXPECT_TRUE(loadText(clearing, "OTHER=5\nend=\n"));
  EXPECT_EQ(clearing.count.value, 0u);
  EXPECT_EQ(clearing.other.value, 5u);
}

TEST_F(ParamGroupTest, ClearOfAPlainGroupDoesNothing) {
  group.clear();
  EXPECT_EQ(size.value, 1u);
  EXPECT_EQ(group.fileParams.size(), 4u);
}

}  // namespace
}  // namespace LPARAMS::Server
