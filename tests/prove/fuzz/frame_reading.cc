#include "tests/prove/fuzz/frame_reading.h"

namespace fuzz {
namespace {

constexpr uint64_t MAX_SIZE = 16777216;

/// Takes what stands at the front; once something is missing it only gives zeros.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  uint64_t number(size_t size) {
    uint64_t value = 0;
    const std::string_view bytes = piece(size);
    for (size_t i = bytes.size(); i > 0; --i) {
      value = value << 8 | static_cast<unsigned char>(bytes[i - 1]);
    }
    return value;
  }

  std::string_view piece(uint64_t size) {
    if (size > bytes_.size()) {
      complete_ = false;
      bytes_ = {};
      return {};
    }
    const std::string_view taken = bytes_.substr(0, static_cast<size_t>(size));
    bytes_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view string() { return piece(number(4)); }
  std::string_view rest() { return piece(bytes_.size()); }
  bool complete() const { return complete_; }
  bool atEnd() const { return bytes_.empty(); }

 private:
  std::string_view bytes_;
  bool complete_ = true;
};

Request readRequest(std::string_view body) {
  Reader reader(body);
  Request request;
  const uint64_t first = reader.number(1);
  if (first == 1) {
    request.kind = Request::Command;
    request.flags = static_cast<uint8_t>(reader.number(1));
    request.module = static_cast<int32_t>(reader.number(4));
    request.command = static_cast<int32_t>(reader.number(4));
    request.revision = reader.number(8);
    request.input = reader.rest();
    if (request.flags > 3) return {};
  } else if (first == 2 || first == 3) {
    request.kind = first == 2 ? Request::Status : Request::Subscription;
    if (!reader.atEnd()) return {};
  } else if (first == 4) {
    request.kind = Request::AgentCommand;
    request.name = reader.string();
    request.input = reader.rest();
  }
  return reader.complete() ? request : Request();
}

/// Whether the bytes are an event or a notice; `first` is the first of them.
bool isOther(uint64_t first, Reader& reader) {
  if (first == 130) {
    (void)reader.piece(8 + 4 + 4);
    return reader.complete() && !reader.rest().empty();
  }
  if (first != 131) return false;
  (void)reader.piece(1 + 8 + 4 + 4 + 8 + 4 + 4);
  for (int i = 0; i < 3; ++i) (void)reader.string();
  return reader.complete();
}

}  // namespace

std::vector<Request> readRequests(std::string_view bytes) {
  std::vector<Request> requests;
  Reader reader(bytes);
  while (!reader.atEnd()) {
    const uint64_t size = reader.number(4);
    if (!reader.complete()) break;
    if (size > MAX_SIZE) {
      requests.push_back({});
      break;
    }
    const std::string_view body = reader.piece(size);
    if (!reader.complete()) break;
    requests.push_back(readRequest(body));
    if (requests.back().kind == Request::Malformed) break;
  }
  return requests;
}

std::optional<std::vector<Reply>> readReplies(std::string_view bytes) {
  std::vector<Reply> replies;
  Reader reader(bytes);
  while (!reader.atEnd()) {
    Reader body(reader.string());
    if (!reader.complete()) return std::nullopt;
    const uint64_t first = body.number(1);
    if (first != 129) {
      if (!isOther(first, body)) return std::nullopt;
      continue;
    }
    Reply reply;
    reply.result = static_cast<int32_t>(body.number(4));
    reply.reason = static_cast<uint32_t>(body.number(4));
    (void)body.number(8);
    reply.text = body.string();
    reply.output = body.rest();
    if (!body.complete()) return std::nullopt;
    replies.push_back(reply);
  }
  return replies;
}

}  // namespace fuzz
