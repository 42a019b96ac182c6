#include "agent/state/sealed_text.h"

#include "text/hash.h"

namespace agent {
namespace {

constexpr std::string_view SEAL = "#xxh3-128=";

std::string sealOf(std::string_view text) { return std::string(SEAL) + text::hashOf(text) + "\n"; }

}  // namespace

std::string sealed(std::string_view text) { return std::string(text) + sealOf(text); }

SealedText unsealed(std::string file) {
  const size_t at = file.rfind(SEAL);
  if (at == std::string::npos || (at != 0 && file[at - 1] != '\n')) {
    return {std::move(file), SealedText::Missing};
  }
  const std::string seal = file.substr(at);
  file.resize(at);
  const bool intact = seal == sealOf(file);
  return {std::move(file), intact ? SealedText::Intact : SealedText::Broken};
}

}  // namespace agent
