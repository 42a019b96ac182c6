// A program that loads the settings module and uses the settings; docs/embedding.md explains it.
// Usage: embed MODULE DIRECTORY
#include <dlfcn.h>

#include <filesystem>
#include <iostream>

#include "lparams/interface/commands.h"
#include "lparams/interface/file_names.h"
#include "lparams/server.h"
#include "platform/command_bridge.h"
#include "platform/markup_document.h"
#include "platform/paths_service.h"

using namespace LPARAMS::Server;
using Text = const std::string&;
// The platform: a state directory, a bridge whose sessions may do everything, a parser of nothing.
class BridgeSession {};
static std::string directory;
static CommandListener* listener = nullptr;
std::string systemVarDir() { return directory; }
void AddCommandListener(CommandListener* added) { listener = added; }
void DelCommandListener(CommandListener*) { listener = nullptr; }
bool _BridgeServerSide_AuthSession(BridgeSession&, ModuleIdType, long) { return true; }
MLDoc::~MLDoc() = default;
bool MLDoc::load(const char*) { return false; }
void MLDoc::release() {}
ChPair MLDoc::content(Token&) { return {}; }
ChPair MLDoc::getAttributeValue(const Token&, const ChPair&) { return {}; }
int MLDoc::getInt(const ChPair&) const { return 0; }
MLDoc::ChildIterator::ChildIterator(MLDoc* d, Token& t) : document_(d), current_(t) {}
bool MLDoc::ChildIterator::operator()(const ChPair&) { return false; }
bool streq(const char*, unsigned, const char*, unsigned) { return false; }
bool strtoint(const char*, const char*, int&) { return false; }
static void tell(Text what, Text where = {}) { std::cout << what << ' ' << where << '\n'; }
struct Reports final : LoadLog {
  void unknownParam(Text key, Text group) override { tell("unknown: " + key, "in " + group); }
  void paramFailed(Text key, Text group) override { tell("failed: " + key, "in " + group); }
  void paramsMissing(int n, int, Text in) override { tell(std::to_string(n) + " missing in", in); }
  void rootMismatch(Text key, Text) override { tell("not settings: " + key); }
  void fileFailed(Text file) override { tell("not read to its end: " + file); }
  void badValue(Text name, Text text) override { tell("no value of " + name + ": " + text); }
  void extraText(Text name, Text text) override { tell("dropped at " + name + ": " + text); }
};
static Server_t* root = nullptr;
static int saveAndTell(const char*) {
  std::string report;
  const bool saved = root->save(&report);
  return tell(saved ? "saved" : "not saved", report), saved;
}

int main(int argc, char** argv) {
  if (argc != 3) return 64;
  directory = argv[2] + std::string("/");
  const std::filesystem::path earlier[] = {directory + LEGACY_FILE_NAME, LEGACY_SYSTEM_FILE};
  if (exists(earlier[0]) || exists(earlier[1])) return 78;  // the module would delete it unread
  void* const module = ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return std::cerr << ::dlerror() << '\n', 69;
  root = *static_cast<Server_t**>(::dlsym(module, "_ZN7LPARAMS6serverE"));
  root->saveHook = saveAndTell;
  root->IKE->observers.push_back([](int begin) { tell("IKE", begin ? "changes" : "has changed"); });
  Reports reports;
  if (!root->load(&reports)) return 78;
  {
    UIntParam& timeout = root->IKE->EXCHANGE_TIMEOUT;
    const basekit::ObjectLevelLockable::Lock lock(timeout);
    tell(timeout.name, std::to_string(timeout.value));
    timeout.value = 120;  // of which no observer hears
  }
  // What a client sends: the group as a whole, of which they hear, and then a save.
  std::string input, reply;
  CommandStreamOut out{input};
  put(out, std::string("IKE"));
  root->IKE->write(out);
  BridgeSession session;
  const bool written = listener->ExecCommand(session, WRITE_GROUP, input, reply) != 0;
  return written && listener->ExecCommand(session, SAVE, {}, reply) != 0 ? 0 : 74;
}
