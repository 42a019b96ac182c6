#include "agent/base/mutex.h"

class Planted {
 public:
  int count() { return count_; }

 private:
  agent::Mutex mutex_;
  int count_ GUARDED_BY(mutex_) = 0;
};

int planted(Planted& planted) { return planted.count(); }
