// A load log that writes every report down as one readable line.
#pragma once

#include <string>
#include <vector>

#include "lparams/params/load_log.h"
#include "tests/support/readable_bytes.h"

namespace testing_support {

/// Keeps the reports of a load in their order. What comes from the text of a file stands in quotes,
/// names of ours do not:
///
///     unknownParam("FOO", LOG)        paramFailed("FOO", LOG)       paramsMissing(2, 14, LOG)
///     badValue(IKE_PORT, "abc")       extraText(IKE_PORT, " x")
///     rootMismatch("FOO", ROOT)       fileFailed("/dir/file")
class RecordingLoadLog : public LPARAMS::Server::LoadLog {
 public:
  virtual ~RecordingLoadLog() = default;

  void unknownParam(const std::string& key, const std::string& group) override {
    reports.push_back("unknownParam(" + inQuotes(key) + ", " + group + ")");
  }
  void paramFailed(const std::string& key, const std::string& group) override {
    reports.push_back("paramFailed(" + inQuotes(key) + ", " + group + ")");
  }
  void paramsMissing(int missing, int total, const std::string& group) override {
    reports.push_back("paramsMissing(" + std::to_string(missing) + ", " + std::to_string(total) +
                      ", " + group + ")");
  }
  void rootMismatch(const std::string& key, const std::string& rootName) override {
    reports.push_back("rootMismatch(" + inQuotes(key) + ", " + rootName + ")");
  }
  void fileFailed(const std::string& fileName) override {
    reports.push_back("fileFailed(" + inQuotes(fileName) + ")");
  }
  void badValue(const std::string& param, const std::string& text) override {
    reports.push_back("badValue(" + param + ", " + inQuotes(text) + ")");
  }
  void extraText(const std::string& param, const std::string& text) override {
    reports.push_back("extraText(" + param + ", " + inQuotes(text) + ")");
  }

  std::vector<std::string> reports;
};

/// A recording log that is the module's log, g_loadlog, for as long as it lives. For tests that
/// link the module's objects and load single parameters or groups.
class ActiveLoadLog : public RecordingLoadLog {
 public:
  ActiveLoadLog() { LPARAMS::Server::g_loadlog = this; }
  ~ActiveLoadLog() override { LPARAMS::Server::g_loadlog = nullptr; }

  ActiveLoadLog(const ActiveLoadLog&) = delete;
  ActiveLoadLog& operator=(const ActiveLoadLog&) = delete;
};

}  // namespace testing_support
