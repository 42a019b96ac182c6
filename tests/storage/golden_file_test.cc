// The whole settings file, compared with the texts in tests/storage/data.
#include <gmock/gmock.h>

#include "tests/module/loaded_module.h"
#include "tests/storage/catalogue_walk.h"
#include "tests/support/recording_load_log.h"

using testing::EndsWith;
using testing::IsEmpty;
using testing_support::RecordingLoadLog;

namespace host {
namespace {

using namespace LPARAMS::Server;

const std::string DATA = SOURCE_DIR "/tests/storage/data/";

int otherVariant(const EnumParam& param) {
  const Variant* last = param.variants;
  while (last[1].name != nullptr) ++last;
  return last->value != param.defaultValue ? last->value : param.variants->value;
}

/// Flags the other way round, numbers at their upper limit, the last variant (the first if the last
/// is the default), strings that name their place.
void moveAwayFromDefault(ParamGroup& group, Param& param) {
  const std::string place = std::string(param.name) + " of " + group.name;
  switch (param.getTypeId()) {
    case TYPE_BOOL: {
      auto& flag = static_cast<BoolParam&>(param);
      flag.value = !flag.value;
      break;
    }
    case TYPE_USHORT: {
      auto& port = static_cast<PortParam&>(param);
      port.value = port.max;
      break;
    }
    case TYPE_UINT: {
      auto& number = static_cast<UIntParam&>(param);
      number.value = number.max;
      break;
    }
    case TYPE_INT: {
      auto& enumeration = static_cast<EnumParam&>(param);
      enumeration.value = otherVariant(enumeration);
      break;
    }
    case TYPE_STRING:
      static_cast<StStParam&>(param).value = place;
      break;
    case TYPE_SECRET:
      static_cast<QcdSParam&>(param).value = place;
      break;
    default:
      FAIL() << place << " has a type that the catalogue does not use";
  }
}

class GoldenFile : public ModuleTest {
 protected:
  void saveAnew() {
    root().rawSettings.clear();
    ASSERT_TRUE(root().save(nullptr));
  }

  const std::string defaults = readFile(DATA + "defaults.ini");
  const std::string awayFromDefaults = readFile(DATA + "away_from_defaults.ini");
  RecordingLoadLog log;
};

TEST_F(GoldenFile, IsThatOfTheDefaultsForAFreshModule) {
  saveAnew();
  EXPECT_EQ(readFile(settingsPath), defaults);
}

TEST_F(GoldenFile, HoldsEveryValueAndEveryUser) {
  (void)module.addUser();
  forEachParameter(root(), moveAwayFromDefault);
  (void)module.addUser();
  saveAnew();
  EXPECT_EQ(readFile(settingsPath), awayFromDefaults);
}

TEST_F(GoldenFile, EndsWithTheRootsEndLineAndANewline) {
  saveAnew();
  EXPECT_THAT(readFile(settingsPath), EndsWith("\n    end=\nend=\n"));
}

TEST_F(GoldenFile, HasAnEmptyListWithoutUsersAndABlockForEachUser) {
  saveAnew();
  EXPECT_THAT(readFile(settingsPath), EndsWith("    /USERS=\n"
                                               "    end=\n"
                                               "end=\n"));
  (void)module.addUser();
  saveAnew();
  EXPECT_THAT(readFile(settingsPath), EndsWith("    /USERS=\n"
                                               "        /USER=\n"
                                               "            NAME=\n"
                                               "            LSP_SOURCE=SOURCE_DDP\n"
                                               "            LSP_FILE=\n"
                                               "            PMP_SERVERS=\n"
                                               "            PMP_LOGLEVEL=_LL_EVENTS\n"
                                               "            PMP_AUTH=PMPAUTH_SIG\n"
                                               "            PMP_AUTH_MODE=PMPAUTH_MM\n"
                                               "            PMP_IDTYPE=PMPID_KEY_ID\n"
                                               "            PMP_IDDATA=\n"
                                               "            PMP_TIMEOUT=10\n"
                                               "            PMP_CERT_SUBJECT=\n"
                                               "            PMP_PSK_NAME=\n"
                                               "        end=\n"
                                               "    end=\n"
                                               "end=\n"));
}

TEST_F(GoldenFile, ComesBackTheSameFromSaveLoadSave) {
  for (const std::string& text : {defaults, awayFromDefaults}) {
    module.reload();
    writeFile(settingsPath, text);
    EXPECT_TRUE(root().load(&log));
    EXPECT_THAT(log.reports, IsEmpty());
    EXPECT_FALSE(root().isChanged());
    saveAnew();
    EXPECT_EQ(readFile(settingsPath), text);
  }
}

}  // namespace
}  // namespace host
