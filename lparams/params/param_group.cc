#include "lparams/params/param_group.h"

#include <istream>

#include "lparams/params/load_log.h"
#include "lparams/params/module_objects.h"
#include "lparams/params/text_form.h"

namespace LPARAMS::Server {
namespace {

constexpr const char* END_KEY = "end";

void reportUnknown(const std::string& key, const std::string& group) {
  if (g_loadlog != nullptr) g_loadlog->unknownParam(key, group);
}

/// A key as it stands in the file, without what precedes it on its line.
struct Key {
  std::string name;
  bool namesGroup = false;  ///< marked by a slash; matters only if the name is unknown
};

/// Reads the next key of a block. Returns false at the end of the input.
bool readKey(std::istream& is, Key& key) {
  do {
    key.name = nextKey(is);
    if (key.name.empty() && is.fail()) return false;
  } while (key.name.empty());

  size_t begin = 0;
  while (begin < key.name.size() && static_cast<unsigned char>(key.name[begin]) <= ' ') ++begin;
  key.namesGroup = begin < key.name.size() && key.name[begin] == '/';
  if (key.namesGroup) ++begin;
  key.name.erase(0, begin);
  return true;
}

void skipNewline(std::istream& is) { is.ignore(1); }

/// Consumes the block of an unknown group, inner blocks included, and reports each of its keys
/// under the name of the block that it stands in. Iterates, because a file may nest as deep as it
/// likes.
void skipUnknownGroup(std::istream& is, const std::string& name) {
  std::vector<std::string> openGroups{name};
  Key key;
  while (!openGroups.empty() && readKey(is, key)) {
    if (key.name == END_KEY) {
      skipNewline(is);
      openGroups.pop_back();
      continue;
    }
    if (!key.namesGroup) (void)restOfLine(is);
    reportUnknown(key.name, openGroups.back());
    if (key.namesGroup) openGroups.push_back(key.name);
  }
}

}  // namespace

void ParamGroup::add(Param& member, Lists lists) {
  fileParams.push_back(&member);
  if (lists == FileAndWire) wireParams.push_back(&member);
}

Param* ParamGroup::getParam(const std::string& key) {
  for (Param* member : fileParams) {
    if (key == member->name) return member;
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

  Key key;
  while (readKey(is, key)) {
    if (key.name == END_KEY) {
      skipNewline(is);
      if (remaining >= 1 && g_loadlog != nullptr) {
        g_loadlog->paramsMissing(remaining, total, name);
      }
      return true;
    }
    if (Param* member = getParam(key.name)) {
      if (!member->load(is)) {
        if (g_loadlog != nullptr) g_loadlog->paramFailed(key.name, name);
        return false;
      }
      --remaining;
    } else if (key.namesGroup) {
      reportUnknown(key.name, name);
      skipUnknownGroup(is, key.name);
    } else {
      (void)restOfLine(is);
      reportUnknown(key.name, name);
    }
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
