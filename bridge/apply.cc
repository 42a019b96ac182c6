#include "bridge/apply.h"

#include <utility>

#include "bridge/bytes.h"

namespace bridge {
namespace {

constexpr uint8_t SAVE = 1;

}  // namespace

std::string encode(const ApplyRequest& request) {
  std::string out;
  put(out, request.confirmSeconds);
  put(out, request.save ? SAVE : uint8_t{0});
  put(out, request.message);
  return out + encode(request.changes);
}

std::optional<ApplyRequest> decodeApplyRequest(std::string_view bytes) {
  ApplyRequest request;
  uint8_t flags = 0;
  if (!take(bytes, request.confirmSeconds) || !take(bytes, flags) || flags > SAVE ||
      !take(bytes, request.message)) {
    return std::nullopt;
  }
  request.save = flags != 0;
  auto changes = decodeNamedChanges(bytes);
  if (!changes) return std::nullopt;
  request.changes = std::move(*changes);
  return request;
}

}  // namespace bridge
