#include "bridge/notice.h"

#include <utility>

#include "bridge/bytes.h"

namespace bridge {
namespace {

using bridge::take;  // beside that of what is made of these

bool take(std::string_view& bytes, NoticedChange& change) {
  uint8_t kind = 0;
  if (!take(bytes, kind)) return false;
  change.kind = static_cast<NoticedChange::Kind>(kind);
  return take(bytes, change.value);
}

}  // namespace

void put(std::string& out, const NoticedChange& change) {
  put(out, change.kind);
  put(out, change.value);
}

void put(std::string& out, const Notice& notice) {
  put(out, notice.what);
  put(out, notice.time);
  put(out, notice.uid);
  put(out, notice.pid);
  put(out, notice.revision);
  put(out, notice.reason);
  put(out, notice.more);
  put(out, notice.program);
  put(out, notice.group);
  put(out, notice.text);
  for (const NoticedChange& change : notice.changes) put(out, change);
}

bool take(std::string_view& bytes, Notice& notice) {
  uint8_t what = 0;
  uint32_t reason = 0;
  if (!take(bytes, what) || !take(bytes, notice.time) || !take(bytes, notice.uid) ||
      !take(bytes, notice.pid) || !take(bytes, notice.revision) || !take(bytes, reason) ||
      !take(bytes, notice.more) || !take(bytes, notice.program) || !take(bytes, notice.group) ||
      !take(bytes, notice.text)) {
    return false;
  }
  notice.what = static_cast<Notice::What>(what);
  notice.reason = static_cast<Reason>(reason);
  if (bytes.size() > MAX_NOTICED_CHANGES) return false;
  while (!bytes.empty()) {
    if (!take(bytes, notice.changes.emplace_back())) return false;
  }
  return true;
}

}  // namespace bridge
