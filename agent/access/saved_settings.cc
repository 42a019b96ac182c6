#include "agent/access/saved_settings.h"

#include <sstream>

namespace agent {

using LPARAMS::Server::Catalogue;

std::shared_ptr<Catalogue> SavedSettings::current() {
  const auto text = keeper_.savedText();
  if (!text) return nullptr;
  const MutexLock lock(mutex_);
  if (text_ == text) return settings_;
  auto settings = std::make_shared<Catalogue>();
  // Behind the head of the root's block, with which a text that was saved or loaded begins. The
  // load's reports go nowhere: the agent's own load has told them.
  std::istringstream body(text->substr(text->find('=') + 1));
  (void)settings->load(body);
  text_ = text;
  settings_ = std::move(settings);
  return settings_;
}

}  // namespace agent
