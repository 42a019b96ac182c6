// Which operations hold which lock, and for how long.
#include <gmock/gmock.h>

#include <functional>
#include <future>
#include <sstream>
#include <stdexcept>

#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/mask_param.h"
#include "lparams/params/numeric_param.h"
#include "tests/module/lock_calls.h"
#include "tests/params/variant_tables.h"
#include "tests/support/lock_probe.h"
#include "tests/support/param_forms.h"
#include "tests/support/recording_load_log.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

/// A stream buffer that runs a function whenever its stream is flushed or has to be filled.
class WatchedBuffer : public std::stringbuf {
 public:
  explicit WatchedBuffer(std::function<void()> watch) : watch_(std::move(watch)) {}

  /// Text that the stream reads character by character.
  void feed(std::string text) { text_ = std::move(text); }

 private:
  int sync() override {
    watch_();
    return 0;
  }
  int_type underflow() override {
    watch_();
    if (next_ == text_.size()) return traits_type::eof();
    setg(&text_[next_], &text_[next_], &text_[next_] + 1);
    return traits_type::to_int_type(text_[next_++]);
  }

  std::function<void()> watch_;
  std::string text_;
  size_t next_ = 0;
};

class LockTest : public testing::Test {
 protected:
  ParamGroup group{"GROUP"};
  BoolParam flag{group, "FLAG", true};
  UIntParam count{group, "COUNT", Default{1}, Range{0, 9}};
  EnumParam enumeration{group, "ENUM", 1, FLAGS};
  MaskParam mask{group, "MASK", 1, FLAGS};
  StStParam line{group, "LINE", ""};
  QcdSParam secret{group, "SECRET", ""};
  SimpleParam<std::string, 6> word{group, "WORD", "word"};
};

TEST_F(LockTest, SaveHoldsTheParametersLockUntilTheLineIsFlushed) {
  for (Param* param : group.fileParams) {
    int flushes = 0;
    WatchedBuffer buffer([&] { flushes += isLocked(*param) ? 1 : 100; });
    std::ostream os(&buffer);
    param->save(os, 0);
    EXPECT_EQ(flushes, 1) << param->name;
    EXPECT_FALSE(isLocked(*param)) << param->name;
  }
}

TEST_F(LockTest, LoadHoldsTheParametersLockFromItsFirstToItsLastCharacter) {
  for (Param* param : group.fileParams) {
    bool alwaysLocked = true;
    WatchedBuffer buffer([&] { alwaysLocked = alwaysLocked && isLocked(*param); });
    buffer.feed("1 x\n");
    std::istream is(&buffer);
    param->load(is);
    EXPECT_TRUE(alwaysLocked) << param->name;
    EXPECT_FALSE(isLocked(*param)) << param->name;
  }
}

TEST_F(LockTest, WriteAndReadTakeTheParametersLock) {
  for (Param* param : group.fileParams) {
    std::string bytes;
    CommandStreamOut out{bytes};
    host::recordTakings();
    EXPECT_TRUE(param->write(out));
    EXPECT_THAT(host::locksTaken(), testing::ElementsAre(param));
    CommandStreamIn in(bytes);
    host::recordTakings();
    EXPECT_TRUE(param->read(in));
    EXPECT_THAT(host::locksTaken(), testing::ElementsAre(param));
  }
}

TEST_F(LockTest, AGroupsSaveAndLoadHoldItsLockThroughout) {
  bool alwaysLocked = true;
  WatchedBuffer buffer([&] { alwaysLocked = alwaysLocked && isLocked(group); });
  std::ostream os(&buffer);
  group.save(os, 0);
  buffer.feed("\nCOUNT=1\nFOO=1\nend=\n");
  std::istream is(&buffer);
  group.load(is);
  EXPECT_TRUE(alwaysLocked);
  EXPECT_FALSE(isLocked(group));
}

TEST_F(LockTest, AGroupHoldsItsLockWhileItsMembersWriteAndRead) {
  struct Probe : Param {
    explicit Probe(ParamGroup& group) : Param("PROBE"), group(group) { group.add(*this); }
    int getTypeId() const override { return 0; }
    bool write(CommandStreamOut&) override { return isLocked(group) && !isLocked(*this); }
    bool read(CommandStreamIn&) override { return isLocked(group) && !isLocked(*this); }
    ParamGroup& group;
  };
  ParamGroup outer("OUTER");
  Probe probe(outer);
  std::string bytes;
  CommandStreamOut out{bytes};
  CommandStreamIn in(bytes);
  EXPECT_TRUE(outer.write(out));
  EXPECT_TRUE(outer.read(in));
  EXPECT_FALSE(isLocked(outer));
}

TEST_F(LockTest, ACommandThatIsTooShortReleasesEveryLock) {
  EXPECT_EQ(readBytes(group, unhex("01 00")).thrown, "CommandStreamError");
  EXPECT_FALSE(isLocked(group));
  for (Param* param : group.fileParams) {
    EXPECT_FALSE(isLocked(*param)) << param->name;
  }
}

TEST_F(LockTest, AStreamThatThrowsWhileAGroupIsSavedReleasesEveryLock) {
  int flushes = 0;
  WatchedBuffer buffer([&] {
    if (++flushes == 3) throw std::runtime_error("no room");  // in the second member
  });
  std::ostream os(&buffer);
  os.exceptions(std::ios::badbit);
  EXPECT_THROW(group.save(os, 0), std::runtime_error);
  EXPECT_FALSE(isLocked(group));
  for (Param* param : group.fileParams) {
    EXPECT_FALSE(isLocked(*param)) << param->name;
  }
}

TEST_F(LockTest, AThreadThatHoldsTheLocksMayUseTheParameters) {
  const ParamGroup::Lock groupLock(group);
  const Param::Lock countLock(count);
  EXPECT_EQ(readBytes(group, wireBytes(group)).thrown, "");
  EXPECT_EQ(savedText(count), "COUNT=1\n");
  EXPECT_TRUE(isLocked(group));
  EXPECT_TRUE(isLocked(count));
}

TEST_F(LockTest, LookupTypeAndTheBasesSaveAndLoadTakeNoLock) {
  const ParamGroup::Lock groupLock(group);
  const Param::Lock countLock(count);
  // A call that waited for a lock would wait for ever.
  std::async(std::launch::async, [&] {
    EXPECT_EQ(group.getParam("COUNT"), &count);
    EXPECT_EQ(group.getTypeId(), 7);
    EXPECT_EQ(count.getTypeId(), 2);
    std::stringstream text;
    EXPECT_TRUE(count.Param::save(text, 0));
    EXPECT_TRUE(count.Param::load(text));
    group.clear();
  }).wait();
}

}  // namespace
}  // namespace LPARAMS::Server
