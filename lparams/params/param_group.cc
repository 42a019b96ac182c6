#include "lparams/params/param_group.h"

#include <cstring>

#include "lparams/params/block_reader.h"
#include "lparams/params/load_log.h"
#include "lparams/params/text_writer.h"

namespace LPARAMS::Server {
namespace {

/// Keys may hold zero bytes, names end at theirs. Most names differ in the first letter from the
/// key that is looked for; that needs no call.
bool isNamed(const char* name, const std::string& key) {
  return name[0] == key[0] && std::strcmp(name, key.c_str()) == 0 &&
         std::strlen(name) == key.size();
}

void reportFailed(const std::string& key, const std::string& group) {
  if (g_loadlog != nullptr) g_loadlog->paramFailed(key, group);
}

void reportMissing(int missing, int total, const std::string& group) {
  if (g_loadlog != nullptr) g_loadlog->paramsMissing(missing, total, group);
}

}  // namespace

void ParamGroup::add(Param& member, Lists lists) {
  fileParams.push_back(&member);
  if (lists == FileAndWire) wireParams.push_back(&member);
}

Param* ParamGroup::getParam(const std::string& key) {
  for (Param* member : fileParams) {
    if (isNamed(member->name, key)) return member;
  }
  return nullptr;
}

void ParamGroup::saveHead(std::ostream& os, int indent) const {
  putLine(os, indent, "/", name, "=");
}

void ParamGroup::saveEnd(std::ostream& os, int indent) { putLine(os, indent, END_KEY, "="); }

bool ParamGroup::save(std::ostream& os, int indent) {
  Lock lock(*this);
  saveHead(os, indent);
  for (Param* member : fileParams) {
    if (!member->save(os, indent + 1)) return false;
  }
  saveEnd(os, indent);
  return true;
}

bool ParamGroup::load(std::istream& is) {
  Lock lock(*this);
  const auto total = static_cast<int>(fileParams.size());
  // Counts loads, not members: duplicates and the entries of a list take it below zero.
  int remaining = total;
  clear();

  BlockReader block(is);
  std::string key;  // one for all: most fit the memory of the one before
  for (Key next; block.next(next);) {
    if (next.name == END_KEY) {
      block.finishEnd();
      if (remaining >= 1) reportMissing(remaining, total, name);
      return true;
    }
    key = next.name;
    if (Param* const member = getParam(key)) {
      if (!member->load(is)) {
        reportFailed(key, name);
        return false;
      }
      --remaining;
      continue;
    }
    if (!next.namesBlock) block.skipValue();
    reportUnknown(key, name);
    if (next.namesBlock) block.skipBlock(key);
  }
  return false;
}

bool ParamGroup::write(CommandStreamOut& out) {
  Lock lock(*this);
  for (Param* member : wireParams) {
    if (!member->write(out)) return false;
  }
  return true;
}

bool ParamGroup::read(CommandStreamIn& in) {
  Lock lock(*this);
  for (Param* member : wireParams) {
    if (!member->read(in)) return false;
  }
  return true;
}

}  // namespace LPARAMS::Server
