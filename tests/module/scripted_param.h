// A parameter whose operations do what the test says.
#pragma once

#include <functional>
#include <iosfwd>

#include "lparams/params/param_group.h"

namespace host {

/// The last member of a group of the loaded module, named "SCRIPTED". By default it saves and loads
/// nothing and succeeds. REQUIRES: the group is not used any more when the parameter is destroyed.
class ScriptedParam : public LPARAMS::Server::Param {
 public:
  explicit ScriptedParam(LPARAMS::Server::ParamGroup& group) : Param("SCRIPTED") {
    group.add(*this);
  }

  int getTypeId() const override { return LPARAMS::Server::TYPE_STRING; }
  bool save(std::ostream& os, int) override { return onSave ? onSave(os) : true; }
  bool load(std::istream& is) override { return onLoad ? onLoad(is) : Param::load(is); }
  bool write(LPARAMS::Server::CommandStreamOut&) override { return onWrite ? onWrite() : true; }
  bool read(LPARAMS::Server::CommandStreamIn&) override { return onRead ? onRead() : true; }

  std::function<bool(std::ostream&)> onSave;
  std::function<bool(std::istream&)> onLoad;
  std::function<bool()> onWrite;
  std::function<bool()> onRead;
};

}  // namespace host
