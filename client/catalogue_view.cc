#include "client/catalogue_view.h"

#include "client/failure.h"
#include "lparams/params/param.h"
#include "lparams/values/values.h"

namespace client {
namespace {

using Json = CatalogueView::Json;
using namespace LPARAMS::Server;

int typeOf(const Json& param) { return param.at("type").get<int>(); }

}  // namespace

CatalogueView::CatalogueView(const std::string& schema) try : schema_(Json::parse(schema)) {
  for (const Json& group : schema_.at("groups")) {
    for (const Json& param : group.at("params")) {
      names_.push_back(group.at("name").get<std::string>() + "." +
                       param.at("name").get<std::string>());
      params_.emplace(names_.back(), &param);
    }
  }
} catch (const Json::exception&) {
  throw Failure(programs::EXIT_UNAVAILABLE, "the agent's catalogue cannot be read");
}

const Json* CatalogueView::find(std::string_view fullName) const {
  const size_t open = fullName.find('[');
  const size_t dot = fullName.rfind('.');
  const bool ofUser = open != std::string_view::npos && dot != std::string_view::npos && dot > open;
  const auto found =
      !ofUser
          ? params_.find(fullName)
          : params_.find(std::string(fullName.substr(0, open)) + std::string(fullName.substr(dot)));
  return found == params_.end() ? nullptr : found->second;
}

std::string legalValues(const Json& param) {
  switch (typeOf(param)) {
    case TYPE_BOOL:
      return "0 or 1";
    case TYPE_USHORT:
    case TYPE_UINT:
      return param.at("min").dump() + " to " + param.at("max").dump();
    case TYPE_INT: {
      std::string names;
      for (const Json& value : param.at("values")) {
        if (!names.empty()) names += ", ";
        names += value.at("name").get<std::string>();
      }
      return names;
    }
    default:
      return "one line of text";
  }
}

Json typedValue(const Json& param, const std::string& value) {
  switch (typeOf(param)) {
    case TYPE_BOOL:
      return value == "1";
    case TYPE_USHORT:
    case TYPE_UINT:
      return Json::parse(value, nullptr, false);
    default:
      return value;
  }
}

NamePieces takeApart(std::string_view fullName) {
  const size_t dot = std::min(fullName.rfind('.'), fullName.size());
  const std::string_view owner = fullName.substr(0, dot);
  NamePieces pieces;
  pieces.member = fullName.substr(std::min(dot + 1, fullName.size()));
  const size_t open = std::min(owner.find('['), owner.size());
  pieces.group = owner.substr(0, open);
  if (open < owner.size()) pieces.user = owner.substr(open + 1, owner.size() - open - 2);
  return pieces;
}

}  // namespace client
