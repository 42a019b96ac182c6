// The settings file under locales of the agent: numbers stay plain and names match whatever the
// locale thinks of digits and letters.
#include <gmock/gmock.h>

#include <cctype>
#include <clocale>
#include <cstdlib>
#include <locale>

#include "tests/module/child_process.h"
#include "tests/module/loaded_module.h"
#include "tests/support/recording_load_log.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace host {
namespace {

/// Writes 10485760 as 10.485.760, and reads nothing else as one number.
class GroupedDigits : public std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  std::string do_truename() const override { return "yes"; }
  std::string do_falsename() const override { return "no"; }
};

class Locale : public ModuleTest {
 protected:
  /// Saves and loads the numbers and expects them back. Changes the process for good.
  void expectNumbersToSurvive() {
    root().LOG->MAX_LOG_SIZE.value = 10485760;
    root().UPDATE->CHECK_UPDATE_INTERVAL.value = 4294967295;
    root().IKE->IKE_PORT.value = 12345;
    ASSERT_TRUE(root().save(nullptr));
    EXPECT_THAT(readFile(settingsPath), HasSubstr("        MAX_LOG_SIZE=10485760\n"));
    EXPECT_THAT(readFile(settingsPath), HasSubstr("        IKE_PORT=12345\n"));

    module.reload();
    root().LOG->MAX_LOG_SIZE.value = 0;
    EXPECT_TRUE(root().load(&log));
    EXPECT_THAT(log.reports, IsEmpty());
    EXPECT_EQ(root().LOG->MAX_LOG_SIZE.value, 10485760u);
    EXPECT_EQ(root().UPDATE->CHECK_UPDATE_INTERVAL.value, 4294967295u);
    EXPECT_EQ(root().IKE->IKE_PORT.value, 12345);
    EXPECT_FALSE(root().isChanged());
  }

  /// Makes the Turkish locale, which has an i of its own, that of the process.
  void becomeTurkish() {
    const std::string definition =
        "localedef -i tr_TR -f ISO-8859-9 '" + directory.path + "tr_TR.ISO-8859-9'";
    ASSERT_EQ(std::system(definition.c_str()), 0) << definition;
    ASSERT_EQ(setenv("LOCPATH", directory.path.c_str(), 1), 0);
    ASSERT_NE(std::setlocale(LC_ALL, "tr_TR.ISO-8859-9"), nullptr);
    ASSERT_NE(std::tolower('I'), 'i') << "the locale is not in effect";
    std::locale::global(std::locale("tr_TR.ISO-8859-9"));
  }

  testing_support::RecordingLoadLog log;
};

TEST_F(Locale, ThatGroupsDigitsDoesNotChangeNumbers) {
  runInChild([&] {
    std::locale::global(std::locale(std::locale::classic(), new GroupedDigits));
    expectNumbersToSurvive();
  });
}

TEST_F(Locale, ThatIsTurkishDoesNotChangeNumbers) {
  runInChild([&] {
    becomeTurkish();
    expectNumbersToSurvive();
  });
}

TEST_F(Locale, ThatIsTurkishDoesNotChangeWhichNamesMatch) {
  runInChild([&] {
    becomeTurkish();
    writeFile(settingsPath,
              "/ROOT=\n"
              "/POLICY=\nSYSTEM_LSP_SOURCE=source_file\nPMP_IDTYPE=pmpid_ip\nend=\n"
              "/IKE=\nIKE1_STATUS=ike_status_disabled\nend=\n"
              "end=\n");
    EXPECT_TRUE(root().load(&log));
    EXPECT_EQ(root().POLICY->SYSTEM_LSP_SOURCE.value, LPARAMS::Server::SOURCE_FILE);
    EXPECT_EQ(root().POLICY->PMP_IDTYPE.value, LPARAMS::Server::PMPID_IP);
    EXPECT_EQ(root().IKE->IKE1_STATUS.value, LPARAMS::Server::IKE_STATUS_DISABLED);
  });
}

}  // namespace
}  // namespace host
