#include "agent/base/json_text.h"

#include <gtest/gtest.h>

#include <new>
#include <nlohmann/json.hpp>

#include "tests/module/failing_allocation.h"

namespace agent {
namespace {

const std::string LONG = "a text that takes memory of its own \xFF\n\"";

std::string object() {
  JsonObject inner;
  inner.add("text", LONG);
  JsonObject outer;
  outer.add("number", 7);
  outer.add("nothing", nullptr);
  outer.add("yes", true);
  outer.addText("inner", inner.text());
  return outer.text();
}

TEST(JsonText, IsWhatTheLibraryReads) {
  EXPECT_EQ(JsonObject().text(), "{}");
  EXPECT_EQ(object(),
            R"({"number":7,"nothing":null,"yes":true,"inner":{"text":"a text that takes memory )"
            "of its own \xEF\xBF\xBD\\n\\\"\"}}");
  EXPECT_EQ(nlohmann::json::parse(object())["number"], 7);
}

TEST(JsonText, ThrowsWhereThereIsNoMemory) {
  int number = 0;
  for (bool failed = true; failed;) {
    host::failAllocation(++number);
    try {
      (void)object();
    } catch (const std::bad_alloc&) {
    }
    failed = host::allocationHasFailed();
    host::failAllocation(0);
  }
  EXPECT_GT(number, 10);
}

}  // namespace
}  // namespace agent
