#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "bench/settings.h"
#include "bench/store.h"

namespace bench {
namespace {

constexpr unsigned USERS = 10'000;

double residentBytes() {
  std::ifstream statm("/proc/self/statm");
  double total = 0;
  double resident = 0;
  statm >> total >> resident;
  return resident * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

struct Figures {
  double written;  ///< after a client has written the users
  double loaded;   ///< after a load, which keeps the text of the file as well
  double text;     ///< bytes of the file
  double strings;
};

/// Runs in a process of its own, whose heap is as a starting agent's.
template <typename Measure>
double inChild(Measure measure) {
  int ends[2];
  if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
  const pid_t child = ::fork();
  if (child == 0) {
    const double figure = measure();
    const bool sent = ::write(ends[1], &figure, sizeof figure) == sizeof figure;
    ::_exit(sent ? 0 : 1);
  }
  double figure = 0;
  const bool received = ::read(ends[0], &figure, sizeof figure) == sizeof figure;
  int status = 0;
  (void)::waitpid(child, &status, 0);
  (void)::close(ends[0]);
  (void)::close(ends[1]);
  if (!received || status != 0) throw std::runtime_error("the memory could not be measured");
  return figure;
}

}  // namespace

Facts memoryFacts(const Place& place) {
  const std::string directory = place.directory + "/memory";
  const std::string copy = copyModule(place.module, directory);
  Facts facts;
  facts["strings and parameters per user"] = inChild([&] {
    auto store = makeStore(place, "memory", USERS);
    double strings = 0;
    for (auto* user : store->root().USERS->items) strings += static_cast<double>(textBytes(*user));
    std::ofstream(directory + "/users") << store->read("USERS");
    return strings / USERS + static_cast<double>(parameterBytes());
  });
  facts["text per user"] = inChild([&] {
    auto store = makeStore(place, "memory", USERS);
    return static_cast<double>(store->root().rawSettings.size()) / USERS;
  });
  facts["resident per user, written"] = inChild([&] {
    Module store(copy, directory);
    const double before = residentBytes();
    {
      std::string record(static_cast<size_t>(USERS) * 1000, '\0');
      std::ifstream file(directory + "/users");
      file.read(record.data(), static_cast<std::streamsize>(record.size()));
      record.resize(static_cast<size_t>(file.gcount()));
      std::string reply;
      store.execute(WRITE_GROUP, commandInput("USERS", record), reply);
    }
    return (residentBytes() - before) / USERS;
  });
  facts["resident per user, loaded"] = inChild([&] {
    const std::string saved = place.directory + "/memory-" + std::to_string(USERS);
    Module store(copyModule(place.module, saved), saved);
    const double before = residentBytes();
    store.load();
    return (residentBytes() - before) / USERS;
  });
  return facts;
}

}  // namespace bench
