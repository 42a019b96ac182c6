// Parts of a test that end their process, change it for good, or do not end at all.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

namespace host {

/// Runs the body in a child process and passes if it neither failed an expectation nor threw, and
/// came back before the deadline. REQUIRES: the calling process has one thread.
testing::AssertionResult passesInChild(
    const std::function<void()>& body,
    std::chrono::milliseconds deadline = std::chrono::seconds(60));

/// Runs the body in a child process and passes if it is still running, on the processor, when the
/// time has gone by. The child is killed then.
testing::AssertionResult keepsBusyInChild(const std::function<void()>& body,
                                          std::chrono::milliseconds time);

/// Runs the body in a child process and returns the status with which it ended, -1 if it was ended
/// by a signal or did not end. REQUIRES: the calling process has one thread.
int statusOfChild(const std::function<void()>& body);

}  // namespace host
