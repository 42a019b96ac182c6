// A load that is looked at while it runs.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "inspection/finding.h"
#include "inspection/inspection.h"
#include "inspection/line_counter.h"
#include "inspection/shown.h"
#include "inspection/text_source.h"
#include "inspection/watched_group.h"
#include "lparams/catalogue/catalogue.h"
#include "lparams/params/block_reader.h"
#include "lparams/params/load_log.h"

namespace inspection {

/// Has the module's own classes load a text, and follows them with a reader of its own: between two
/// things that the load tells there is one key, whose place that reader finds. Used once.
class Inspector final : public LPARAMS::Server::LoadLog, private Watcher {
 public:
  /// REQUIRES: all of them outlive the inspector.
  Inspector(std::string_view text, LPARAMS::Server::Catalogue& settings, size_t maxUsers,
            Findings& findings, std::vector<Taken>* taken);

  /// Returns what the module's load returns. REQUIRES: g_loadlog is this inspector, and the text
  /// holds something else than KEY_MARKs.
  bool load();

  void unknownParam(const std::string& key, const std::string& group) override;
  void paramFailed(const std::string& key, const std::string& group) override;
  void paramsMissing(int missing, int total, const std::string& group) override;
  void rootMismatch(const std::string& key, const std::string& rootName) override;
  void fileFailed(const std::string& fileName) override;
  void badValue(const std::string& param, const std::string& text) override;
  void extraText(const std::string& param, const std::string& text) override;

 private:
  /// A block that is being loaded.
  struct Block {
    LPARAMS::Server::ParamGroup& group;
    std::string path;  ///< empty for the root
    Place head;
    std::list<WatchedMember>* members;
    bool missingReported = false;
  };

  bool load(WatchedMember& watched, std::istream& is) override;
  bool loadValue(LPARAMS::Server::Param& param, std::istream& is);
  bool loadBlock(LPARAMS::Server::ParamGroup& group, Place head, std::istream& is);
  bool loadUsers(LPARAMS::Server::ParamGroup& users, Place head, std::istream& is);
  bool loadMembers(Block block, std::istream& is);

  size_t beginOfHead() const;
  size_t beginOfKey();
  void followToEnd();
  void lookAtSilence(LPARAMS::Server::Param& param, size_t begin, size_t end);
  void lookAtLines(size_t begin, size_t end);
  void lookAtUser(const LPARAMS::Server::USER_t& user, Place head, size_t firstFinding);
  std::string similarMember(std::string_view key) const;
  void addMissing(bool reported);
  void addValue(Finding::Kind kind, bool reported);
  void addTaken(LPARAMS::Server::ParamGroup& owner, LPARAMS::Server::Param* param, Place place);
  void add(Finding finding) { findings_.add(std::move(finding)); }
  std::string pathOf(std::string_view member) const;
  std::string pathOfKnown(std::string_view key) const;

  const std::string_view text_;
  LPARAMS::Server::Catalogue& settings_;
  Findings& findings_;
  std::vector<Taken>* const taken_;  // may be null
  const size_t maxUsers_;
  const Shown shown_;

  TextSource source_;    // what the load reads
  TextSource followed_;  // the same, for the reader that follows
  LPARAMS::Server::BlockReader follower_{followed_};
  size_t told_ = 0;  // offset of what comes behind the last that the load has told
  LineCounter lines_;

  std::vector<Block> blocks_;                         // those that are open and known
  Place lastHead_;                                    // of the block that was loaded last
  Place userName_;                                    // where the user has the name
  std::map<std::string, size_t, std::less<>> users_;  // lines by name

  // The value that is being loaded.
  LPARAMS::Server::Param* param_ = nullptr;
  Place valuePlace_;
  std::string_view given_;  // to the end of its line
  bool unreadable_ = false;
  bool behindSecret_ = false;  // nothing known has come behind the last secret
};

}  // namespace inspection
