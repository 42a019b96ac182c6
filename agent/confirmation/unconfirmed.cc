#include "agent/confirmation/unconfirmed.h"

#include <stdexcept>
#include <string_view>
#include <utility>

#include "agent/state/sealed_text.h"
#include "bridge/bytes.h"
#include "inspection/settings_completeness.h"

namespace agent {
namespace {

constexpr std::string_view UNCONFIRMED_MAGIC = "lparams unconfirmed 1\n";

}  // namespace

std::string encode(const Unconfirmed& changes) {
  std::string body(UNCONFIRMED_MAGIC);
  bridge::put(body, changes.until);
  bridge::put(body, changes.seconds);
  bridge::put(body, changes.before);
  bridge::put(body, changes.after);
  body += '\n';  // the seal is a line of its own
  return sealed(body);
}

Unconfirmed decodeUnconfirmed(std::string file) {
  const SealedText body = unsealed(std::move(file));
  if (body.seal != SealedText::Intact) throw std::runtime_error("its checksum does not fit");
  std::string_view rest = body.text;
  if (!rest.starts_with(UNCONFIRMED_MAGIC)) throw std::runtime_error("it is of another version");
  rest.remove_prefix(UNCONFIRMED_MAGIC.size());
  Unconfirmed changes;
  if (!bridge::take(rest, changes.until) || !bridge::take(rest, changes.seconds) ||
      !bridge::take(rest, changes.before) || !bridge::take(rest, changes.after) || rest != "\n") {
    throw std::runtime_error("it is cut off");
  }
  for (const std::string* text : {&changes.before, &changes.after}) {
    const std::string reason = inspection::incompleteBecause(*text);
    if (!reason.empty()) throw std::runtime_error("its settings are not whole: " + reason);
  }
  return changes;
}

}  // namespace agent
