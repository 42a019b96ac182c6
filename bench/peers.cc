#include <fstream>

#include "bench/peer.h"
#include "bench/store.h"

namespace bench {
namespace {

void addPeer(Subjects& subjects, const std::string& name, std::shared_ptr<Peer> peer,
             std::shared_ptr<const Settings> settings, const std::string& path) {
  const size_t users = settings->users.size();
  peer->build(*settings);
  std::ofstream(path) << peer->text();
  peer->clear();
  Values compared(true);
  peer->load(path, *settings, compared);

  subjects.push_back({label("text", name, users), timed([peer] { keep(peer->text().size()); })});
  subjects.push_back({label("load", name, users), timed([peer] { peer->clear(); },
                                                        [peer, settings, path] {
                                                          Values values(false);
                                                          peer->load(path, *settings, values);
                                                        })});
}

}  // namespace

void addPeerSubjects(Subjects& subjects, const Place& place, unsigned users) {
  const auto store = makeStore(place, "peers", users);
  auto settings = std::make_shared<const Settings>(settingsOf(store->root()));
  const std::string stem = place.directory + "/peer" + std::to_string(users);
  addPeer(subjects, "GLib key file", makeKeyFile(), settings, stem + ".keyfile");
  addPeer(subjects, "nlohmann-json", makeJson(), settings, stem + ".json");
  addPeer(subjects, "Boost property tree", makePropertyTree(), settings, stem + ".ptree");
  addPeer(subjects, "pugixml", makeXml(), settings, stem + ".xml");
  // With 10,000 users one load takes seconds: the library looks for the place of every list entry.
  if (users > 1000) return;
  addPeer(subjects, "libyang", makeYang(*settings), settings, stem + ".yang.json");
}

}  // namespace bench
