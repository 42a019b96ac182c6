// A named group of parameters.
#pragma once

#include <list>
#include <string>
#include <vector>

#include "lparams/params/param.h"

namespace LPARAMS::Server {

/// Where a parameter of a group takes part.
enum Lists {
  FileAndWire,
  FileOnly,  ///< in the settings file and found by name, but never sent or accepted on the bridge
};

/// A parameter that holds others. The concrete groups keep them as data members; the lists only
/// point at them, in the order in which they were added, and are constant after construction.
///
/// The record of a group on the bridge is the plain concatenation of its wireParams: no names, no
/// count, no end. A write that breaks off leaves the members read so far changed.
class ParamGroup : public Param {
 public:
  explicit ParamGroup(const char* name) : Param(name) {}

  int getTypeId() const override { return TYPE_GROUP; }

  /// Appends the block: the head line, each of fileParams one level deeper, the end line. Stops at
  /// the first member that fails and returns false, without an end line.
  bool save(std::ostream& os, int indent) override;

  /// Reads the block behind its head, up to its end line. Unknown keys and blocks, bad values and
  /// missing members are reported and do not stop it. Returns false, with the members read so far
  /// changed, if the input ends inside the block or a member's load fails.
  bool load(std::istream& is) override;

  bool write(CommandStreamOut& out) override;
  bool read(CommandStreamIn& in) override;

  /// Called by load before it reads. Does nothing: members that the file does not name keep their
  /// values, and a list that is loaded twice holds its entries twice.
  virtual void clear() {}

  /// The first of fileParams with exactly this name, or null. Takes no lock.
  virtual Param* getParam(const std::string& key);

  /// Appends a member to the lists. Only for constructors: nothing guards the lists afterwards.
  void add(Param& member, Lists lists = FileAndWire);

  std::list<Param*> fileParams;  ///< in file order; not owned
  std::list<Param*> wireParams;  ///< in wire order; not owned

  /// Called by the command dispatcher, in order, with 1 before a command writes the group and with
  /// 0 after it has succeeded. Not locked: fill it before the first command.
  std::vector<void (*)(int)> observers;

 protected:
  // The two border lines of a block in the text.
  void saveHead(std::ostream& os, int indent) const;
  static void saveEnd(std::ostream& os, int indent);
};

}  // namespace LPARAMS::Server
