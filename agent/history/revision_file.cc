#include "agent/history/revision_file.h"

#include <stdexcept>
#include <string_view>
#include <utility>

#include "agent/state/sealed_text.h"
#include "bridge/bytes.h"
#include "inspection/settings_completeness.h"

namespace agent {
namespace {

constexpr std::string_view REVISION_MAGIC = "lparams revision 1\n";

}  // namespace

std::string encode(const KeptRevision& revision) {
  std::string body(REVISION_MAGIC);
  bridge::put(body, bridge::encode(revision.head));
  body += '\n';
  body += revision.text;
  body += '\n';  // the seal is a line of its own
  return sealed(body);
}

KeptRevision decodeKeptRevision(std::string file) {
  const SealedText body = unsealed(std::move(file));
  if (body.seal != SealedText::Intact) throw std::runtime_error("its checksum does not fit");
  std::string_view rest = body.text;
  std::string head;
  if (!rest.starts_with(REVISION_MAGIC)) throw std::runtime_error("it is of another version");
  rest.remove_prefix(REVISION_MAGIC.size());
  if (!bridge::take(rest, head) || rest.size() < 2) throw std::runtime_error("it is cut off");
  auto decoded = bridge::decodeRevision(head);
  if (!decoded) throw std::runtime_error("its head cannot be read");
  KeptRevision revision{std::move(*decoded), std::string(rest.substr(1, rest.size() - 2))};
  if (const std::string reason = inspection::incompleteBecause(revision.text); !reason.empty()) {
    throw std::runtime_error("its settings are not whole: " + reason);
  }
  return revision;
}

}  // namespace agent
