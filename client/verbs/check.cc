// Looks at files of settings, without an agent.
#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "checking/check.h"
#include "client/failure.h"
#include "client/user_file.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "inspection/settings_completeness.h"

namespace client {
namespace {

using checking::Checked;
using inspection::Remark;
using inspection::Severity;
using Json = nlohmann::ordered_json;

constexpr const char* CHECK_NOTES =
    R"~(Prints everything that is wrong with settings files, settings of earlier versions (XML) and
documents (JSON, or lines GROUP.NAME=VALUE), one line each:

  FILE:LINE:COLUMN: error: what the load would lose or replace, or why it would not load at all
  FILE:LINE:COLUMN: warning: what it would take, but not as written or probably not as meant

Columns count bytes. "-" stands for the standard input. Secrets are not shown. No agent is
needed.

Exit status: 0 if there is nothing worse than a warning, 65 if there is an error, 78 if the load
of a file would break off, 74 if a file cannot be read; the worst of them all.

Examples:
  lparamsctl check localsettings.ini
  lparamsctl check --json new/*.ini
  lparamsctl check localsettings.xml)~";

struct CheckGiven {
  std::vector<std::string> files;
  bool json = false;
};

/// What is printed of the files, as far as they have been looked at.
class Report {
 public:
  explicit Report(bool asJson) : asJson_(asJson) {}

  void addChecked(const std::string& file, const Checked& checked) {
    for (const Remark& remark : checked.remarks) {
      add(file, remark);
      if (remark.severity == Severity::Error) worsen(programs::EXIT_ILLEGAL);
    }
    if (checked.leftOut > 0) {
      add(file, {.message = "and " + std::to_string(checked.leftOut) + " more"});
      worsen(programs::EXIT_ILLEGAL);
    }
    if (!checked.usable) worsen(programs::EXIT_BAD_FILE);
  }

  void addUnread(const std::string& file, const Failure& failure) {
    if (asJson_) add(file, {.message = failure.what()});
    unread_ += std::string(failure.what()) + "\n";
    worsen(failure.status);
  }

  /// Throws Failure unless there is nothing worse than a warning.
  void finish() const {
    if (asJson_) std::cout << list_.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    if (!std::cout.flush()) throw Failure(programs::EXIT_IO, "cannot write the output");
    if (status_ != programs::EXIT_OK) throw Failure(status_, unread_);
  }

 private:
  void add(const std::string& file, const Remark& remark) {
    if (!asJson_) {
      std::cout << inspection::lineOf(file, remark) << '\n';
      return;
    }
    Json entry = {{"file", file}};
    if (remark.place.line != 0) {
      entry["line"] = remark.place.line;
      entry["column"] = remark.place.column;
    }
    entry["severity"] = inspection::nameOf(remark.severity);
    if (!remark.parameter.empty()) entry["parameter"] = remark.parameter;
    entry["message"] = remark.message;
    if (remark.given) entry["given"] = *remark.given;
    if (remark.taken) entry["taken"] = *remark.taken;
    if (remark.reported) entry["reported"] = true;
    list_.push_back(std::move(entry));
  }

  /// A file that cannot be read is worse than one that cannot be used.
  void worsen(programs::ExitStatus status) {
    const auto rank = [](programs::ExitStatus one) { return one == programs::EXIT_IO ? 99 : +one; };
    if (rank(status) > rank(status_)) status_ = status;
  }

  const bool asJson_;
  Json list_ = Json::array();
  std::string unread_;
  programs::ExitStatus status_ = programs::EXIT_OK;
};

void check(Context& /*context*/, const CheckGiven& given) {
  Report report(given.json);
  for (const std::string& file : given.files) {
    try {
      report.addChecked(file, checking::check(readUserInput(file, inspection::MAX_SETTINGS_SIZE)));
    } catch (const Failure& failure) {
      report.addUnread(file, failure);
    }
  }
  report.finish();
}

}  // namespace

void addCheck(CLI::App& app, Context& context) {
  const auto [command, given] = addVerb(
      app, context, "check", "Find what is wrong with files of settings", CHECK_NOTES, check);
  command.add_option("FILE", given->files, "The files; - is the standard input")->required();
  addJson(command, given->json);
}

}  // namespace client
