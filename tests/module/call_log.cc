#include "tests/module/call_log.h"

#include <mutex>

namespace host {
namespace {

std::mutex mutex;
std::vector<std::string> calls;  // protected by mutex

}  // namespace

void record(const std::string& call) {
  const std::lock_guard lock(mutex);
  calls.push_back(call);
}

std::vector<std::string> callsDuring(const std::function<void()>& action) {
  {
    const std::lock_guard lock(mutex);
    calls.clear();
  }
  action();
  const std::lock_guard lock(mutex);
  return calls;
}

}  // namespace host
