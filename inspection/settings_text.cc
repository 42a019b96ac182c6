#include "inspection/settings_text.h"

#include <sstream>
#include <utility>

#include "inspection/loading.h"

namespace inspection {

using LPARAMS::Server::Catalogue;

std::string textOf(LPARAMS::Server::ParamGroup& settings) {
  std::ostringstream text;
  (void)settings.save(text, 0);
  return std::move(text).str();
}

std::shared_ptr<Catalogue> settingsIn(const std::string& text) {
  auto settings = std::make_shared<Catalogue>();
  // Behind the head of the root's block, with which the text begins.
  std::istringstream body(text.substr(text.find('=') + 1));
  const Loading loading(nullptr);
  (void)settings->load(body);
  return settings;
}

}  // namespace inspection
