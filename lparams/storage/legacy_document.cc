#include "lparams/storage/legacy_document.h"

#include <optional>
#include <string>
#include <utility>

namespace LPARAMS::Server {
namespace {

constexpr ChPair chars(std::string_view text) { return {text.data(), text.data() + text.size()}; }

bool equals(const ChPair& chars, std::string_view text) {
  return streq(chars.begin, static_cast<unsigned>(chars.end - chars.begin), text.data(),
               static_cast<unsigned>(text.size()));
}

std::string toString(const ChPair& chars) {
  return chars.begin == nullptr ? std::string() : std::string(chars.begin, chars.end);
}

template <typename P, typename V>
void assign(P& param, V&& value) {
  basekit::ObjectLevelLockable::Lock lock(param);
  param.value = std::forward<V>(value);
}

/// The old numbering had no AUTO; 1 and everything unknown become it, while only 101 becomes its
/// forced form.
int nattPolicyOf(const ChPair& old) {
  int number = 0;
  if (!strtoint(old.begin, old.end, number)) return NATT_POLICY_DISABLED;
  // clang-format off
  switch (number) {
    case 0: return NATT_POLICY_DISABLED;
    case 2: return NATT_POLICY_STD;
    case 3: return NATT_POLICY_OLD;
    case 101: return NATT_POLICY_AUTO_FORCE;
    case 102: return NATT_POLICY_STD_FORCE;
    case 103: return NATT_POLICY_OLD_FORCE;
    default: return NATT_POLICY_AUTO;
  }
  // clang-format on
}

void assignPolicySource(POLICY_t& policy, const std::string& type, const std::string& source) {
  if (type == "1") {
    assign(policy.SYSTEM_LSP_SOURCE, SOURCE_PMP);
    assign(policy.PMP_SERVERS, source);
    assign(policy.PMP_AUTH, PMPAUTH_SIG);
    assign(policy.PMP_IDTYPE, PMPID_DN);
    assign(policy.PMP_IDDATA, "");
  } else if (type == "2") {
    assign(policy.SYSTEM_LSP_FROM_FILE, source);
    assign(policy.SYSTEM_LSP_SOURCE, SOURCE_FILE);
  }
}

/// Calls `visit` with each child of the element that has the tag. The iterator gets a copy of the
/// parent's token, because it overwrites the one it is given.
template <typename Visit>
void forEachChild(MLDoc& document, MLDoc::Token parent, std::string_view tag, Visit visit) {
  MLDoc::ChildIterator next(&document, parent);
  while (next(chars(tag))) visit(parent);
}

void importUserModule(MLDoc& document, const MLDoc::Token& module, POLICY_t& policy) {
  std::optional<std::string> sourceType;
  std::optional<std::string> source;
  forEachChild(document, module, LEGACY_PARAM, [&](MLDoc::Token& param) {
    const ChPair name = document.getAttributeValue(param, chars(LEGACY_NAME));
    const ChPair content = document.content(param);
    if (equals(name, LEGACY_CERT_SUBJECT)) {
      assign(policy.LOCAL_CERT_SUBJECT, toString(content));
    } else if (equals(name, LEGACY_LOG_LEVEL)) {
      assign(policy.PMP_LOGLEVEL, document.getInt(content));
    } else if (equals(name, LEGACY_SOURCE_TYPE)) {
      sourceType = toString(content);
    } else if (equals(name, LEGACY_SOURCE)) {
      source = toString(content);
    }
  });
  if (sourceType && source) assignPolicySource(policy, *sourceType, *source);
}

void importIkeModule(MLDoc& document, const MLDoc::Token& module, IKE_t& ike) {
  forEachChild(document, module, LEGACY_PARAM, [&](MLDoc::Token& param) {
    if (equals(document.getAttributeValue(param, chars(LEGACY_NAME)), LEGACY_NATT_POLICY)) {
      assign(ike.NATT_POLICY, nattPolicyOf(document.content(param)));
    }
  });
}

}  // namespace

void importLegacyDocument(MLDoc& document, POLICY_t& policy, IKE_t& ike) {
  forEachChild(document, {}, LEGACY_SETTINGS, [&](const MLDoc::Token& settings) {
    forEachChild(document, settings, LEGACY_MODULE, [&](const MLDoc::Token& module) {
      const ChPair name = document.getAttributeValue(module, chars(LEGACY_NAME));
      if (equals(name, LEGACY_USER_MODULE)) {
        importUserModule(document, module, policy);
      } else if (equals(name, LEGACY_IKE_MODULE)) {
        importIkeModule(document, module, ike);
      }
    });
  });
}

}  // namespace LPARAMS::Server
