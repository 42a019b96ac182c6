// Round trips over a socket: one client's latencies, several clients' throughput.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// Sends a request and waits for its reply. Throws if there is none.
using RoundTrip = std::function<void()>;

/// A server and how to become its client: each call opens a connection of its own.
struct Service {
  std::string name;
  std::function<RoundTrip()> connect;
};

/// A started process, killed and waited for when the object goes.
class Process {
 public:
  explicit Process(int id) : id_(id) {}
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

 private:
  const int id_;
};

/// Runs the command in a process of its own, its output dropped.
std::unique_ptr<Process> startCommand(const std::vector<std::string>& command);

/// Runs the function in a process of its own, until it returns.
std::unique_ptr<Process> startFunction(const std::function<void()>& function);

/// A blocking connection to the Unix stream socket, as soon as somebody listens there.
int connectTo(const std::string& path);

void sendAll(int socket, const std::string& bytes);
/// Throws unless all the bytes arrive.
void receiveAll(int socket, char* bytes, size_t size);

/// A read of IKE through the agent that listens there. The client looks whether the reply is the
/// first one again: what is timed is the agent.
Service bridgeService(const std::string& path);

/// The same request to a process that sends back what it gets. Its process ends with the last
/// client.
Service echoService(const std::string& path);

/// A method call with a reply of as many bytes, through the message bus that listens there.
Service busService(const std::string& path, size_t replySize);

}  // namespace bench
