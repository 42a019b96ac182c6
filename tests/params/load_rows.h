// Tables of texts to load into one parameter.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/readable_bytes.h"
#include "tests/support/recording_load_log.h"

namespace testing_support {

/// What a load leaves.
template <typename T>
struct LoadRow {
  std::string text;                       ///< what stands behind the "="
  T value;                                ///< of the parameter afterwards
  std::vector<std::string> reports = {};  ///< in their order
  std::string unread = {};                ///< what is left of the text
};

/// What a load has not consumed.
inline std::string unreadText(std::istream& is) {
  is.clear();
  return std::string(std::istreambuf_iterator<char>(is), {});
}

/// Loads the text of each row into the parameter, whose value is `before` every time.
template <typename P>
void checkLoads(P& param, const decltype(P::value)& before,
                const std::vector<LoadRow<decltype(P::value)>>& rows) {
  for (const auto& row : rows) {
    SCOPED_TRACE("loading " + inQuotes(row.text));
    ActiveLoadLog log;
    param.value = before;
    std::istringstream is(row.text);
    EXPECT_TRUE(param.load(is));
    EXPECT_EQ(param.value, row.value);
    EXPECT_EQ(log.reports, row.reports);
    EXPECT_EQ(unreadText(is), row.unread);
  }
}

}  // namespace testing_support
