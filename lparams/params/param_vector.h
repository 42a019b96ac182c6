// A group whose content is a list of entries.
#pragma once

#include <string>
#include <vector>

#include "lparams/params/param_group.h"

namespace LPARAMS::Server {

/// The list saves its entries as nested blocks, loads them by making a new entry for every block,
/// and travels as a 4-byte count and the entries' records.
///
/// `Entry` is a ParamGroup with a default constructor and a GROUP_NAME.
///
/// Kept oddities: loading does not empty the list first, so a second load appends the file's
/// entries again; and a command that breaks off leaves the entries made so far, the last one
/// incomplete, in the place of the old list.
template <typename Entry>
class ParamVector : public ParamGroup {
 public:
  using ParamGroup::ParamGroup;
  ~ParamVector() override { destroyEntries(); }

  int getTypeId() const override { return TYPE_USER_LIST; }
  bool save(std::ostream& os, int indent) override;
  bool write(CommandStreamOut& out) override;

  /// Replaces the list. An announced count reserves nothing: entries are made one by one.
  bool read(CommandStreamIn& in) override;

  /// Appends a new entry at its defaults if `key` is exactly the entries' group name; null for any
  /// other key. This is how a load makes the entry that it then fills. Takes no lock.
  Param* getParam(const std::string& key) override;

  /// Appends a new entry at its defaults. Takes no lock.
  Entry* append();

  /// Destroys every entry and empties the list. Takes no lock.
  void destroyEntries();

  std::vector<Entry*> items;  ///< in list order; owned
};

}  // namespace LPARAMS::Server
