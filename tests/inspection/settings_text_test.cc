// Settings in the text of a settings file.
#include "inspection/settings_text.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "inspection/inspection.h"

namespace inspection {
namespace {

TEST(SettingsText, MayBeginInTheLineOfItsHead) {
  EXPECT_EQ(settingsIn("/ROOT=/IKE=\nIKE_PORT=501\nend=\nend=\n")->IKE->IKE_PORT.value, 501);
}

TEST(SettingsText, WhatALoadOfItReportsIsNoFindingOfATextThatIsInspectedMeanwhile) {
  LPARAMS::Server::Catalogue defaults;
  const std::string whole = textOf(defaults);
  std::string faulty = whole;
  faulty.replace(faulty.find("\nend="), 0, "\nUNKNOWN=1");
  const std::string::size_type value = faulty.find("IKE_PORT=");
  ASSERT_NE(value, std::string::npos);
  faulty.insert(faulty.find('\n', value), " and more");

  const std::jthread other([&](const std::stop_token& stop) {
    while (!stop.stop_requested()) (void)settingsIn(faulty);
  });
  for (int round = 0; round < 200; ++round) {
    LPARAMS::Server::Catalogue settings;
    const Inspection inspected = inspect(whole, settings);
    ASSERT_TRUE(inspected.loaded);
    ASSERT_EQ(inspected.findings.count, 0u) << round;
  }
}

}  // namespace
}  // namespace inspection
