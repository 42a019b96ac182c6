// Tests of the verbs, on the real agent.
#pragma once

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/system/system_test.h"

namespace system_testing {

using client_testing::failed;
using client_testing::Outcome;
using client_testing::printed;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

/// lparamsctl and a real agent with the example settings.
class Client : public SystemTest {
 protected:
  void SetUp() override {
    host::writeFile(settingsPath, sourceFile("examples/localsettings.ini"));
    start();
  }

  /// The output of a command that succeeds.
  std::string out(const std::vector<std::string>& arguments) const {
    const client_testing::Outcome outcome = ctl(arguments);
    EXPECT_EQ(outcome, client_testing::printed(outcome.out));
    return outcome.out;
  }

  /// Sets parameters where nobody can see it.
  void setLines(const std::vector<std::string>& lines) const {
    std::string in;
    for (const std::string& line : lines) in += line + "\n";
    const Outcome outcome = ctlWith(in, {"set", "--bytes", "-"});
    EXPECT_EQ(outcome, printed(outcome.out));
  }

  /// A run with this as the standard input.
  client_testing::Outcome ctlWith(const std::string& in, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--socket", socketPath});
    return client_testing::runClient(arguments, {.in = in});
  }
};

}  // namespace system_testing
