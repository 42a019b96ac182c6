// What the module reports of a load, in numbers. Where in the file and why is for the inspection to
// tell, which has the same reports.
#pragma once

#include <string>

#include "lparams/params/load_log.h"

namespace agent {

/// Counts the reports of one load.
class LoadReport : public LPARAMS::Server::LoadLog {
 public:
  void unknownParam(const std::string& /*key*/, const std::string& /*group*/) override { ++count_; }
  void paramFailed(const std::string& /*key*/, const std::string& /*group*/) override { ++count_; }
  void paramsMissing(int missing, int total, const std::string& group) override;
  void rootMismatch(const std::string& /*key*/, const std::string& /*root*/) override { ++count_; }
  void fileFailed(const std::string& /*fileName*/) override { ++count_; }
  void badValue(const std::string& /*param*/, const std::string& /*found*/) override { ++count_; }
  void extraText(const std::string& /*param*/, const std::string& /*text*/) override { ++count_; }

  int reports() const { return count_; }

  /// The file lacks whole groups.
  bool groupsMissing() const { return groupsMissing_; }

 private:
  int count_ = 0;
  bool groupsMissing_ = false;
};

}  // namespace agent
