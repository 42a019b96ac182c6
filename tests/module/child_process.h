// Parts of a test that end their process, change it for good, or do not end at all.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

namespace host {

/// Runs the body in a child process and fails the test unless the child comes back in time without
/// a failed expectation, an exception or a signal. REQUIRES: the calling process has one thread.
void runInChild(const std::function<void()>& body);

/// Runs the body in a child process and passes if it is still running, on the processor, when the
/// time has gone by. The child is killed then. REQUIRES: as above.
testing::AssertionResult keepsBusyInChild(const std::function<void()>& body,
                                          std::chrono::milliseconds time);

/// Runs the body in a child process and returns the status with which it ended, -1 if it was ended
/// by a signal or did not end. REQUIRES: as above.
int statusOfChild(const std::function<void()>& body);

}  // namespace host
