// What the client says when there is no memory, even before it has begun.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>

#include "tests/agent/state/scratch_directory.h"
#include "tests/client/client_process.h"

namespace client_testing {
namespace {

TEST(ClientWithoutMemory, SaysSo) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer wants to be the first that is loaded";
#endif
  // Of tests/prove/failing_memory.cc: which allocation fails, and that all after it do.
  const int32_t shortage[4] = {1, 1, 0, 0};
  const agent_testing::ScratchDirectory directory;
  directory.write("shortage", {reinterpret_cast<const char*>(shortage), sizeof shortage});
  ASSERT_EQ(::setenv("MEMORY_SHORTAGE", directory.at("shortage").c_str(), 1), 0);
  EXPECT_EQ(
      runClient({"--version"}, {.variable = "LD_PRELOAD=" PRODUCTS_DIR "/tests/failing_memory.so"}),
      failed(69, "there is no memory"));
}

}  // namespace
}  // namespace client_testing
