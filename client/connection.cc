// The only source that includes Asio, which is slow to compile.
#include "client/connection.h"

#include <poll.h>

#include <asio/buffer.hpp>
#include <asio/error.hpp>
#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/write.hpp>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

#include "client/failure.h"
#include "text/escape.h"

namespace client {
namespace {

/// For messages. The system is given the path as it is, which may be a short one on purpose.
std::string absolute(const std::string& path) {
  std::error_code error;
  const auto whole = std::filesystem::absolute(path, error);
  return error ? path : whole.lexically_normal().string();
}

}  // namespace

/// Bytes to and from the agent, each way within the time limit.
class Connection::Stream {
 public:
  using Deadline = std::chrono::steady_clock::time_point;

  Stream(const std::string& path, std::chrono::seconds timeout)
      : agent_("the agent at " + text::escaped(absolute(path))), timeout_(timeout) {
    asio::error_code error;
    try {
      do {
        (void)socket_.connect(path, error);  // interrupted, nothing has begun
      } while (error == asio::error::interrupted);
    } catch (const std::system_error& unusable) {
      error = unusable.code();
    }
    if (error) {
      throw Failure(programs::EXIT_UNAVAILABLE, "cannot reach " + agent_ + ": " + error.message());
    }
  }

  [[noreturn]] void fail(const std::string& what) const {
    throw Failure(programs::EXIT_UNAVAILABLE, agent_ + " " + what);
  }

  Deadline deadline() const { return std::chrono::steady_clock::now() + timeout_; }

  void write(const std::string& bytes) {
    (void)run(deadline(),
              [&](auto done) { asio::async_write(socket_, asio::buffer(bytes), done); });
  }

  /// False if nobody reads any more what is written to the descriptor.
  bool waitForInput(int output) {
    std::array waiting = {pollfd{socket_.native_handle(), POLLIN, 0}, pollfd{output, 0, 0}};
    while (::poll(waiting.data(), waiting.size(), -1) < 0) {
      if (errno != EINTR) fail("cannot be waited for: " + std::system_category().message(errno));
    }
    return waiting[1].revents == 0;
  }

  /// Returns what has arrived, at least one byte; valid until the next call.
  std::string_view readSome(Deadline deadline) {
    const size_t size =
        run(deadline, [&](auto done) { socket_.async_read_some(asio::buffer(chunk_), done); });
    return {chunk_.data(), size};
  }

 private:
  /// Starts an operation, waits for its end, and returns how many bytes it has carried.
  template <typename Start>
  size_t run(Deadline deadline, Start start) {
    std::error_code result;
    size_t carried = 0;
    start([&](const std::error_code& error, size_t size) {
      result = error;
      carried = size;
    });
    context_.restart();
    context_.run_until(deadline);
    if (!context_.stopped()) {
      socket_.close();
      context_.run();  // the operation refers to the caller's bytes until it has been called off
      throw Failure(programs::EXIT_TRY_AGAIN,
                    agent_ + " did not answer within " + std::to_string(timeout_.count()) + " s");
    }
    for (const std::error_code closed :
         {std::error_code(asio::error::eof), std::error_code(asio::error::broken_pipe),
          std::error_code(asio::error::connection_reset)}) {
      if (result == closed) fail("closed the connection");
    }
    if (result) fail("cannot be spoken to: " + result.message());
    return carried;
  }

  const std::string agent_;  // what messages call it
  const std::chrono::seconds timeout_;
  asio::io_context context_;
  asio::local::stream_protocol::socket socket_{context_};
  std::array<char, 16 * 1024> chunk_{};
};

Connection::Connection(const std::string& socketPath, std::chrono::seconds timeout)
    : stream_(std::make_unique<Stream>(socketPath, timeout)) {
  stream_->write(bridge::encodeHello());
  const auto deadline = stream_->deadline();
  std::optional<std::string> hello;
  while (!(hello = received_.takeHello())) received_.append(stream_->readSome(deadline));
  uint32_t version = 0;
  if (!bridge::decodeHello(*hello, version)) {
    stream_->fail("does not speak the bridge protocol");
  }
  if (version != bridge::PROTOCOL_VERSION) {
    stream_->fail("speaks version " + std::to_string(version) +
                  " of the bridge protocol, this program version " +
                  std::to_string(bridge::PROTOCOL_VERSION));
  }
}

Connection::~Connection() = default;

bridge::Reply Connection::exchange(const bridge::Request& request) {
  const std::string frame = bridge::encode(request);
  if (frame.size() - bridge::FRAME_HEAD_SIZE > bridge::MAX_FRAME_SIZE) {
    throw Failure(programs::EXIT_ILLEGAL, "the command is longer than the " +
                                              std::to_string(bridge::MAX_FRAME_SIZE) +
                                              " bytes that the bridge takes");
  }
  stream_->write(frame);
  bridge::Message message = receive();
  auto* const reply = std::get_if<bridge::Reply>(&message);
  if (reply == nullptr) stream_->fail("sent an event that nobody has asked for");
  return std::move(*reply);
}

bool Connection::waitForNotice(int output) {
  return !received_.empty() || stream_->waitForInput(output);
}

bridge::Notice Connection::nextNotice() {
  bridge::Message message = receive();
  auto* const notice = std::get_if<bridge::Notice>(&message);
  if (notice == nullptr) stream_->fail("sent what nobody has asked for");
  return std::move(*notice);
}

bridge::Message Connection::receive() {
  const auto deadline = stream_->deadline();
  std::optional<std::string> frame;
  while (!(frame = received_.takeFrame())) {
    if (const auto size = received_.oversize()) {
      stream_->fail("announced a message of " + std::to_string(*size) +
                    " bytes, which is too long");
    }
    received_.append(stream_->readSome(deadline));
  }
  auto message = bridge::decodeMessage(*frame);
  if (!message) stream_->fail("sent a message that cannot be read");
  return std::move(*message);
}

}  // namespace client
