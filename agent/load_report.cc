#include "agent/load_report.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "lparams/params/variant.h"
#include "lparams/values/values.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;

constexpr size_t MAX_NAME = 64;  // bytes; longer than any

/// A parameter that the name of a report can mean: the reports on values do not tell the group.
struct Candidate {
  const char* group;
  Param* param;
};

std::vector<Candidate> candidatesFor(const Server_t& server, const std::string& name) {
  const auto all = server.groups();
  std::vector<ParamGroup*> groups(all.begin(), all.end());
  // The entry that is being loaded is the last one.
  if (!server.USERS->items.empty()) groups.push_back(server.USERS->items.back());
  std::vector<Candidate> found;
  for (ParamGroup* group : groups) {
    for (Param* param : group->fileParams) {
      if (name == param->name) found.push_back({group->name, param});
    }
  }
  return found;
}

/// A value that is missing takes the next line instead, which may hold a secret, with a "=" or with
/// something else between the two.
std::string withoutNextValue(const Server_t& server, const std::string& text) {
  size_t end = text.find('=');
  if (end != std::string::npos) ++end;
  for (const Param* group : server.fileParams) {
    for (const Param* param : static_cast<const ParamGroup*>(group)->fileParams) {
      if (param->getTypeId() != TYPE_SECRET) continue;
      const size_t at = text.find(param->name);
      if (at != std::string::npos) end = std::min(end, at + std::strlen(param->name));
    }
  }
  return end == std::string::npos ? text : text.substr(0, end) + "(hidden)";
}

/// The key, if it has the form of a name or is one that was mistyped. What else stands before a "="
/// may be a part of a value, and of a secret one.
std::string nameOrSize(const Server_t& server, const std::string& key) {
  const bool hasForm = key.size() <= MAX_NAME && std::ranges::all_of(key, [](char c) {
                         return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
                       });
  if (hasForm) return key;
  const std::string_view word = std::string_view(key).substr(0, key.find_last_not_of(" \t") + 1);
  for (const Param* group : server.fileParams) {
    for (const Param* param : static_cast<const ParamGroup*>(group)->fileParams) {
      if (equalNames(word, param->name)) return key;
    }
  }
  return "(no name: " + std::to_string(key.size()) + " bytes, not shown)";
}

std::string groupsOf(const std::vector<Candidate>& candidates) {
  std::string groups;
  for (const Candidate& candidate : candidates) {
    if (!groups.empty()) groups += " or ";
    groups += candidate.group;
  }
  return groups;
}

}  // namespace

void LoadReport::warn(std::string_view message, std::initializer_list<Field> fields) {
  ++reports_;
  log(Level::Warning, message, fields);
}

void LoadReport::unknownParam(const std::string& key, const std::string& group) {
  warn("the group has no such parameter or block; its value was ignored",
       {{"group", nameOrSize(server_, group)}, {"parameter", nameOrSize(server_, key)}});
}

void LoadReport::paramFailed(const std::string& key, const std::string& group) {
  warn("the block is not closed before the end of the file; what was read of it is kept",
       {{"group", nameOrSize(server_, group)}, {"block", nameOrSize(server_, key)}});
}

void LoadReport::paramsMissing(int missing, int total, const std::string& group) {
  if (group == server_.name) groupsMissing_ = true;
  warn("the group has fewer members in the file than it should; those missing keep their values",
       {{"group", group}, {"missing", missing}, {"of", total}});
}

void LoadReport::rootMismatch(const std::string& key, const std::string& rootName) {
  warn("the file does not begin with the root block; nothing was loaded",
       {{"found", shortened(key)}, {"expected", "/" + rootName + "="}});
}

void LoadReport::fileFailed(const std::string& fileName) {
  warn("the file could not be loaded to its end; what was read is kept", {{"file", fileName}});
}

void LoadReport::badValue(const std::string& param, const std::string& found) {
  const std::string text = shortened(withoutNextValue(server_, found));
  const auto candidates = candidatesFor(server_, param);
  if (candidates.empty()) {
    warn("the value cannot be read", {{"parameter", param}, {"text", text}});
    return;
  }
  const bool enumeration = candidates.front().param->getTypeId() == TYPE_INT;
  const std::string done = enumeration
                               ? "the value has no such name; the parameter took its default"
                               : "the value cannot be read; the parameter kept its value";
  const std::string groups = groupsOf(candidates);
  const std::string legal = legalValues(*candidates.front().param);
  if (candidates.size() > 1) {
    warn(done, {{"group", groups}, {"parameter", param}, {"text", text}, {"expected", legal}});
    return;
  }
  Param& only = *candidates.front().param;
  const std::string value = isSecret(only) ? HIDDEN : shortened(valueText(only));
  warn(done, {{"group", groups},
              {"parameter", param},
              {"text", text},
              {"expected", legal},
              {"value", value}});
}

void LoadReport::extraText(const std::string& param, const std::string& text) {
  const std::string groups = groupsOf(candidatesFor(server_, param));
  warn("the value is followed by more text, which was ignored",
       {{"group", groups},
        {"parameter", param},
        {"text", shortened(withoutNextValue(server_, text))}});
}

}  // namespace agent
