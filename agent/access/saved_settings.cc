#include "agent/access/saved_settings.h"

#include "inspection/settings_text.h"

namespace agent {

using LPARAMS::Server::Catalogue;

std::shared_ptr<Catalogue> SavedSettings::current() {
  const auto text = keeper_.savedText();
  if (!text) return nullptr;
  const MutexLock lock(mutex_);
  if (text_ == text) return settings_;
  settings_ = inspection::settingsIn(*text);
  text_ = text;
  return settings_;
}

}  // namespace agent
