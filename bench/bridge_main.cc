// Times the agent's bridge, a bare echo and, in the native width, a message bus: in rounds, one
// after the other, all on the processor that the caller has pinned this program to.
//
// Usage: bridge_bench AGENT DIRECTORY REPORT
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <thread>

#include "bench/latency.h"

namespace {

using Clock = std::chrono::steady_clock;
using bench::RoundTrip;
using bench::Service;

constexpr int ROUNDS = 45;
constexpr int ROUND_TRIPS = 1'000;
constexpr int CLIENTS = 8;
constexpr auto THROUGHPUT_TIME = std::chrono::milliseconds(70);
constexpr size_t IKE_RECORD_SIZE = 92;

double at(std::vector<double>& values, double part) {
  const auto place =
      values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

/// In nanoseconds.
std::vector<double> latencies(const RoundTrip& roundTrip) {
  std::vector<double> times;
  for (int i = 0; i < ROUND_TRIPS; ++i) {
    const auto start = Clock::now();
    roundTrip();
    times.push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count());
  }
  return times;
}

double requestsPerSecond(const std::vector<RoundTrip>& clients) {
  std::atomic<long> requests = 0;
  const auto start = Clock::now();
  {
    std::vector<std::jthread> threads;
    for (const auto& client : clients) {
      threads.emplace_back([&] {
        while (Clock::now() - start < THROUGHPUT_TIME) {
          client();
          ++requests;
        }
      });
    }
  }
  const std::chrono::duration<double> time = Clock::now() - start;
  return static_cast<double>(requests) / time.count();
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 4) return 2;
  const std::string directory = argv[2];
  std::filesystem::create_directories(directory);
  std::filesystem::permissions(directory, std::filesystem::perms::owner_all);
  const auto agent = bench::startCommand(
      {argv[1], "--state-dir", directory, "--socket", directory + "/agent.sock"});
  std::vector<Service> services{bench::echoService(directory + "/echo.sock"),
                                bench::bridgeService(directory + "/agent.sock")};
#ifdef BENCH_PEERS
  services.push_back(bench::busService(directory + "/bus.sock", IKE_RECORD_SIZE));
#endif

  std::map<std::string, std::vector<double>> figures;
  std::map<std::string, std::vector<RoundTrip>> clients;
  for (const auto& service : services) {
    for (int i = 0; i < CLIENTS; ++i) clients[service.name].push_back(service.connect());
    (void)latencies(clients[service.name].front());
  }
  for (int round = 0; round < ROUNDS; ++round) {
    for (auto& [name, connections] : clients) {
      auto times = latencies(connections.front());
      figures["p50/" + name].push_back(at(times, 0.5));
      figures["p99/" + name].push_back(at(times, 0.99));
    }
    for (const auto& [name, connections] : clients) {
      figures["requests per second/" + name].push_back(requestsPerSecond(connections));
    }
  }
  nlohmann::json report;
  for (auto& [name, values] : figures) report[name] = at(values, 0.5);
  std::ofstream(argv[3]) << report.dump(2) << '\n';
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "bridge_bench: %s\n", failure.what());
  return 1;
}
