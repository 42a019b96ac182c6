// The record of a group, as a client writes it: the first byte chooses the group.
#include "editing/record_check.h"
#include "lparams/params/command_stream.h"
#include "tests/prove/fuzz/settings_text.h"
#include "tests/prove/fuzz/target.h"

namespace fuzz {
namespace {

using namespace LPARAMS::Server;

constexpr size_t MAX_USERS = 8;

std::string recordOf(ParamGroup& group) {
  std::string record;
  CommandStreamOut out{record};
  require(group.write(out), "a group cannot be read");
  return record;
}

/// Returns whether the group takes all of it. Nothing else may come out of the module than that it
/// is too short.
bool write(ParamGroup& group, const std::string& record) {
  CommandStreamIn in(record);
  try {
    return group.read(in) && in.pos == in.size;
  } catch (const char* error) {
    require(std::string_view(error) == COMMAND_STREAM_ERROR, "the module threw another word");
    return false;
  }
}

}  // namespace

void tryOnce(std::string_view input) {
  if (input.empty()) return;
  Catalogue settings;
  ParamGroup& group = *settings.groups()[static_cast<unsigned char>(input[0]) % 6];
  const std::string record(input.substr(1));
  std::string command;
  CommandStreamOut out{command};
  put(out, std::string(group.name));
  const auto looked = editing::RecordCheck(settings, MAX_USERS).look(command + record);
  const bool taken = write(group, record);
  if (!looked.refusal.empty()) return;

  require(taken, "a record that was accepted is not read to its end");
  std::string kept = recordOf(group);
#ifdef PLANTED
  if (!kept.empty() && (kept[0] & 0xF0) == 0x70) kept[0] ^= 1;
#endif
  require(kept == record, "a record that was accepted is not what is read back");
  require(looked.textSize == editing::RecordCheck::textSizeOf(group),
          "the check takes the group for more or fewer bytes than it writes");
  Catalogue restarted;
  requireToSurvive(settings, restarted);
  ParamGroup& after = *restarted.groups()[static_cast<unsigned char>(input[0]) % 6];
  require(recordOf(after) == record, "a record that was accepted does not survive a restart");
}

std::vector<std::string> seeds() {
  std::vector<std::string> records;
  forEachSetting([&](Catalogue& settings, ParamGroup& group) {
    char index = 0;
    while (settings.groups()[static_cast<size_t>(index)] != &group) ++index;
    records.push_back(index + recordOf(group));
  });
  return records;
}

}  // namespace fuzz
