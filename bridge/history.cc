#include "bridge/history.h"

#include <utility>

#include "bridge/bytes.h"

namespace bridge {
namespace {

using bridge::take;

constexpr uint8_t FORCED = 1;

bool take(std::string_view& bytes, Revision& revision) {
  std::string changes;
  if (!take(bytes, revision.number) || !take(bytes, revision.time) || !take(bytes, revision.uid) ||
      !take(bytes, revision.pid) || !take(bytes, revision.program) ||
      !take(bytes, revision.message) || !take(bytes, changes) ||
      !take(bytes, revision.changesLeftOut)) {
    return false;
  }
  auto decoded = decodeNamedValues(changes);
  if (!decoded || !decoded->revisions.empty()) return false;
  revision.changes = std::move(decoded->values);
  return true;
}

}  // namespace

std::string encode(const Revision& revision) {
  std::string out;
  put(out, revision.number);
  put(out, revision.time);
  put(out, revision.uid);
  put(out, revision.pid);
  put(out, revision.program);
  put(out, revision.message);
  put(out, encode(NamedValues{.values = revision.changes}));
  put(out, revision.changesLeftOut);
  return out;
}

std::string encode(const SaveRequest& request) {
  std::string out;
  put(out, request.force ? FORCED : uint8_t{0});
  put(out, request.message);
  return out;
}

std::optional<Revision> decodeRevision(std::string_view bytes) {
  Revision revision;
  if (!take(bytes, revision) || !bytes.empty()) return std::nullopt;
  return revision;
}

std::optional<std::vector<Revision>> decodeRevisions(std::string_view bytes) {
  std::vector<Revision> revisions;
  while (!bytes.empty()) {
    if (!take(bytes, revisions.emplace_back())) return std::nullopt;
  }
  return revisions;
}

std::optional<SaveRequest> decodeSaveRequest(std::string_view bytes) {
  uint8_t flags = 0;
  SaveRequest request;
  if (!take(bytes, flags) || flags > FORCED) return std::nullopt;
  if (!take(bytes, request.message) || !bytes.empty()) return std::nullopt;
  request.force = flags != 0;
  return request;
}

}  // namespace bridge
