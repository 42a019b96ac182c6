#include "agent/load_report.h"

#include <vector>

#include "lparams/values/values.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;

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

/// A value that is missing takes the next line instead, which may hold a secret.
std::string withoutNextValue(const std::string& text) {
  const size_t equals = text.find('=');
  return equals == std::string::npos ? text : text.substr(0, equals + 1) + "(hidden)";
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
       {{"group", group}, {"parameter", key}});
}

void LoadReport::paramFailed(const std::string& key, const std::string& group) {
  warn("the block is not closed before the end of the file; what was read of it is kept",
       {{"group", group}, {"block", key}});
}

void LoadReport::paramsMissing(int missing, int total, const std::string& group) {
  if (group == server_.name) groupsMissing_ = true;
  warn("the group has fewer members in the file than it should; those missing keep their values",
       {{"group", group}, {"missing", missing}, {"of", total}});
}

void LoadReport::rootMismatch(const std::string& key, const std::string& rootName) {
  warn("the file does not begin with the root block; nothing was loaded",
       {{"found", key}, {"expected", "/" + rootName + "="}});
}

void LoadReport::fileFailed(const std::string& fileName) {
  warn("the file could not be loaded to its end; what was read is kept", {{"file", fileName}});
}

void LoadReport::badValue(const std::string& param, const std::string& found) {
  const std::string text = withoutNextValue(found);
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
  const std::string value = isSecret(only) ? HIDDEN : valueText(only);
  warn(done, {{"group", groups},
              {"parameter", param},
              {"text", text},
              {"expected", legal},
              {"value", value}});
}

void LoadReport::extraText(const std::string& param, const std::string& text) {
  const std::string groups = groupsOf(candidatesFor(server_, param));
  warn("the value is followed by more text, which was ignored",
       {{"group", groups}, {"parameter", param}, {"text", withoutNextValue(text)}});
}

}  // namespace agent
