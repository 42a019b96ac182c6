#include "bench/store.h"

#include <filesystem>
#include <stdexcept>

#include "lparams/params/command_stream.h"

namespace bench {
namespace {

using namespace LPARAMS::Server;

void check(bool ok, const char* what) {
  if (!ok) throw std::runtime_error(what);
}

std::string nameOf(const std::string& operation, unsigned users) {
  return label(operation, "lparams", users);
}

}  // namespace

std::shared_ptr<Module> makeStore(const Place& place, const std::string& name, unsigned users) {
  const std::string directory = place.directory + "/" + name + "-" + std::to_string(users);
  std::filesystem::remove_all(directory);
  auto store = std::make_shared<Module>(copyModule(place.module, directory), directory);
  store->load();
  store->addUsers(users);
  check(store->root().save(nullptr), "the settings cannot be saved");
  return store;
}

std::string fileText(const Module& store) { return store.root().rawSettings; }

void addStoreSubjects(Subjects& subjects, const Place& place, unsigned users) {
  {
    auto store = makeStore(place, "load", users);
    subjects.push_back({nameOf("load", users),
                        timed([store] { store->clearUsers(); }, [store] { store->load(); })});
  }
  {
    // With a snapshot of another length the text is built, and no byte of it compared.
    auto store = makeStore(place, "text", users);
    store->root().rawSettings += '\n';
    subjects.push_back({nameOf("text", users), timed([store] {
                          check(store->root().isChanged(), "a change was not seen");
                        })});
  }
  {
    auto store = makeStore(place, "check", users);
    subjects.push_back({nameOf("check", users), timed([store] {
                          check(!store->root().isChanged(), "a change was seen");
                        })});
  }
  {
    auto store = makeStore(place, "save", users);
    subjects.push_back({nameOf("save", users), timed([store] {
                          store->root().IKE->IKE_PORT.value ^= 1;
                          check(store->root().save(nullptr), "the settings cannot be saved");
                        })});
  }
  for (const std::string group : {"IKE", "USERS"}) {
    if (group == "IKE" && users != 0) continue;
    auto store = makeStore(place, group, users);
    subjects.push_back({nameOf("read " + group, users), timed([store, input = commandInput(group),
                                                               reply = std::string()]() mutable {
                          reply.clear();
                          store->execute(READ_GROUP, input, reply);
                        })});
    subjects.push_back(
        {nameOf("write " + group, users),
         timed([store, input = commandInput(group, store->read(group)),
                reply = std::string()]() mutable { store->execute(WRITE_GROUP, input, reply); })});
  }
  if (users == 0) {
    const std::string directory = place.directory + "/first-reply";
    const std::string copy = copyModule(place.module, directory);
    subjects.push_back({nameOf("first reply", users), [copy, directory](int times) {
                          double seconds = 0;
                          for (; times > 0; --times) {
                            const Stopwatch stopwatch;
                            Module module(copy, directory);
                            keep(module.read("IKE").size());
                            seconds += stopwatch.seconds();
                          }
                          return seconds;
                        }});
  }
}

}  // namespace bench
