// What is counted of a load's reports.
#include "agent/load_report.h"

#include <gtest/gtest.h>

namespace agent {
namespace {

TEST(LoadReport, CountsEachKind) {
  LoadReport report;
  EXPECT_EQ(report.reports(), 0);
  report.unknownParam("A", "IKE");
  report.paramFailed("LOG", "ROOT");
  report.paramsMissing(1, 2, "LOG");
  report.rootMismatch("A", "ROOT");
  report.fileFailed("file");
  report.badValue("IKE_PORT", "x");
  report.extraText("IKE_PORT", "x");
  EXPECT_EQ(report.reports(), 7);
}

TEST(LoadReport, TellsWhetherGroupsAreMissing) {
  LoadReport report;
  report.paramsMissing(1, 2, "LOG");
  EXPECT_FALSE(report.groupsMissing());
  report.paramsMissing(1, 6, "ROOT");
  EXPECT_TRUE(report.groupsMissing());
}

}  // namespace
}  // namespace agent
