// Tells the operator, in words, what a load of the settings could not take.
#pragma once

#include "agent/base/log.h"
#include "lparams/params/load_log.h"
#include "lparams/server.h"

namespace agent {

/// Logs each report as one line: the parameter, its group, the text, and what the store did. Looks
/// names and limits up in the settings root, which the load has locked for this thread.
class LoadReport : public LPARAMS::Server::LoadLog {
 public:
  explicit LoadReport(const LPARAMS::Server::Server_t& server) : server_(server) {}

  void unknownParam(const std::string& key, const std::string& group) override;
  void paramFailed(const std::string& key, const std::string& group) override;
  void paramsMissing(int missing, int total, const std::string& group) override;
  void rootMismatch(const std::string& key, const std::string& rootName) override;
  void fileFailed(const std::string& fileName) override;
  void badValue(const std::string& param, const std::string& found) override;
  void extraText(const std::string& param, const std::string& text) override;

  int reports() const { return reports_; }

  /// The file lacks whole groups.
  bool groupsMissing() const { return groupsMissing_; }

 private:
  void warn(std::string_view message, std::initializer_list<Field> fields);

  const LPARAMS::Server::Server_t& server_;
  int reports_ = 0;
  bool groupsMissing_ = false;
};

}  // namespace agent
