#include "agent/load_report.h"

namespace agent {
namespace {

constexpr const char* ROOT = "ROOT";

}  // namespace

void LoadReport::paramsMissing(int /*missing*/, int /*total*/, const std::string& group) {
  ++count_;
  if (group == ROOT) groupsMissing_ = true;
}

}  // namespace agent
