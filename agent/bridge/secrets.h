// Secrets, and who gets none.
#pragma once

#include <string>
#include <string_view>

namespace agent {

/// The names of the group's secrets that a record holds: "IKE.QCD_SECRET", joined by ", ". Empty if
/// there are none, or no such group.
std::string secretsOf(std::string_view group);

/// The group's record with an empty text in the place of each secret. REQUIRES: a whole record of a
/// group that has secrets.
std::string withoutSecrets(std::string_view group, const std::string& record);

}  // namespace agent
