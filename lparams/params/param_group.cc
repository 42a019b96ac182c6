#include "lparams/params/param_group.h"

#include <string_view>

#include "lparams/params/load_log.h"
#include "lparams/params/module_objects.h"
#include "lparams/params/text_form.h"

namespace LPARAMS::Server {
namespace {

constexpr std::string_view END_KEY = "end";

void reportUnknown(const std::string& key, const std::string& group) {
  if (g_loadlog != nullptr) g_loadlog->unknownParam(key, group);
}

void reportFailed(const std::string& key, const std::string& group) {
  if (g_loadlog != nullptr) g_loadlog->paramFailed(key, group);
}

void reportMissing(int missing, int total, const std::string& group) {
  if (g_loadlog != nullptr) g_loadlog->paramsMissing(missing, total, group);
}

/// A key of the file, without what precedes it on its line. Valid until the stream is used again.
struct Key {
  std::string_view name;
  bool namesGroup = false;  ///< marked by a slash; matters only if the name is unknown
};

/// Reads the next key of a block. Returns false at the end of the input.
bool readKey(TextReader& reader, Key& key) {
  do {
    key.name = reader.nextKey();
    if (key.name.empty() && reader.failed()) return false;
  } while (key.name.empty());

  key.name = withoutIndent(key.name);
  key.namesGroup = key.name.starts_with('/');
  if (key.namesGroup) key.name.remove_prefix(1);
  return true;
}

void skipNewline(std::istream& is) { is.ignore(1); }

/// Consumes the block of an unknown group, inner blocks included, and reports each of its keys
/// under the name of the block that it stands in. Iterates, because a file may nest as deep as it
/// likes.
void skipUnknownGroup(std::istream& is, const std::string& name) {
  std::vector<std::string> openGroups{name};
  TextReader reader(is);
  Key key;
  while (!openGroups.empty() && readKey(reader, key)) {
    if (key.name == END_KEY) {
      skipNewline(is);
      openGroups.pop_back();
      continue;
    }
    const std::string unknown(key.name);
    if (!key.namesGroup) (void)reader.restOfLine();
    reportUnknown(unknown, openGroups.back());
    if (key.namesGroup) openGroups.push_back(unknown);
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

  const auto loadMember = [&](Param& member) {
    if (member.load(is)) {
      --remaining;
      return true;
    }
    reportFailed(member.name, name);
    return false;
  };

  TextReader reader(is);
  Key key;
  // A file that a save has made names the members in their order; only others are searched for.
  auto expected = fileParams.begin();
  for (;;) {
    for (; expected != fileParams.end() && reader.takeKey((*expected)->name); ++expected) {
      if (!loadMember(**expected)) return false;
    }
    if (!readKey(reader, key)) return false;
    if (key.name == END_KEY) {
      skipNewline(is);
      if (remaining >= 1) reportMissing(remaining, total, name);
      return true;
    }
    const std::string other(key.name);
    if (Param* member = getParam(other)) {
      if (!loadMember(*member)) return false;
    } else if (key.namesGroup) {
      reportUnknown(other, name);
      skipUnknownGroup(is, other);
    } else {
      (void)reader.restOfLine();
      reportUnknown(other, name);
    }
  }
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
