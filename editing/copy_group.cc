#include "editing/copy_group.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace editing {

using namespace LPARAMS::Server;

ParamGroup& counterpart(const Catalogue& catalogue, const ParamGroup& group) {
  const auto groups = catalogue.groups();
  return **std::ranges::find_if(
      groups, [&](const ParamGroup* one) { return std::string_view(one->name) == group.name; });
}

void copyRecord(Param& from, Param& to) {
  std::string bytes;
  CommandStreamOut out{bytes};
  (void)from.write(out);
  CommandStreamIn in(bytes);
  (void)to.read(in);
}

void copyGroup(ParamGroup& from, ParamGroup& to) {
  copyRecord(from, to);
  copyFileOnly(from, to);
}

void copyFileOnly(ParamGroup& from, ParamGroup& to) {
  auto target = to.fileParams.begin();
  for (Param* param : from.fileParams) {
    const bool onWire = std::ranges::find(from.wireParams, param) != from.wireParams.end();
    if (!onWire) copyRecord(*param, **target);
    ++target;
  }
}

}  // namespace editing
