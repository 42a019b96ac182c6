// The operations of ParamVector. Included only by the source that instantiates the list.
#pragma once

#include <memory>

#include "lparams/params/param_vector.h"

namespace LPARAMS::Server {

template <typename Entry>
bool ParamVector<Entry>::save(std::ostream& os, int indent) {
  Lock lock(*this);
  saveHead(os, indent);
  for (Entry* entry : items) (void)entry->save(os, indent + 1);
  saveEnd(os, indent);
  return true;
}

template <typename Entry>
bool ParamVector<Entry>::write(CommandStreamOut& out) {
  Lock lock(*this);
  put(out, static_cast<uint32_t>(items.size()));
  for (Entry* entry : items) (void)entry->write(out);
  return true;
}

template <typename Entry>
bool ParamVector<Entry>::read(CommandStreamIn& in) {
  Lock lock(*this);
  destroyEntries();
  uint32_t count = 0;
  take(in, count);
  for (; count > 0; --count) (void)append()->read(in);
  return true;
}

template <typename Entry>
Param* ParamVector<Entry>::getParam(const std::string& key) {
  return key == Entry::GROUP_NAME ? append() : nullptr;
}

template <typename Entry>
Entry* ParamVector<Entry>::append() {
  auto entry = std::make_unique<Entry>();
  items.push_back(entry.get());
  return entry.release();
}

template <typename Entry>
void ParamVector<Entry>::destroyEntries() {
  for (Entry* entry : items) delete entry;
  items.clear();
}

}  // namespace LPARAMS::Server
