#include "tests/params/plain_text_form.h"

#include <strings.h>

#include <sstream>
#include <string>

#include "lparams/catalogue/user_list.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/load_log.h"
#include "lparams/params/mask_param.h"
#include "lparams/params/numeric_param.h"

namespace testing_support {
namespace {

using namespace LPARAMS::Server;

bool isGroup(const Param& param) {
  return param.getTypeId() == TYPE_GROUP || param.getTypeId() == TYPE_USER_LIST;
}

std::string nameOf(const EnumParam& param, int value) {
  const Variant* row = param.variants;
  while (row->name != nullptr && row->value != value) ++row;
  return row->name == nullptr ? "" : row->name;
}

void saveEnum(EnumParam& param, std::ostream& os) {
  if (nameOf(param, param.value).empty()) param.value = param.defaultValue;
  os << nameOf(param, param.value);
}

void saveMask(const MaskParam& param, std::ostream& os) {
  int rest = param.value;
  bool first = true;
  for (const Variant* row = param.variants; rest != 0 && row->name != nullptr; ++row) {
    if ((row->value & rest) == 0) continue;
    rest &= ~row->value;
    os << (first ? "" : "|") << row->name;
    first = false;
  }
}

void saveValue(Param& param, std::ostream& os) {
  if (auto* mask = dynamic_cast<MaskParam*>(&param)) return saveMask(*mask, os);
  if (auto* variable = dynamic_cast<EnumParam*>(&param)) return saveEnum(*variable, os);
  switch (param.getTypeId()) {
    case TYPE_BOOL:
      os << static_cast<SimpleParam<bool, TYPE_BOOL>&>(param).value;
      break;
    case TYPE_USHORT:
      os << static_cast<SimpleParam<unsigned short, TYPE_USHORT>&>(param).value;
      break;
    case TYPE_UINT:
      os << static_cast<SimpleParam<unsigned int, TYPE_UINT>&>(param).value;
      break;
    case TYPE_INT:
      os << static_cast<SimpleParam<int, TYPE_INT>&>(param).value;
      break;
    case TYPE_STRING:
      os << static_cast<SimpleParam<std::string, TYPE_STRING>&>(param).value;
      break;
    case TYPE_SECRET:
      os << static_cast<SimpleParam<std::string, TYPE_SECRET>&>(param).value;
      break;
  }
}

std::string upTo(std::istream& is, char delimiter) {
  std::string text;
  std::getline(is, text, delimiter);
  return text;
}

void finishLine(const Param& param, std::istream& is) {
  const bool failed = is.fail();
  is.clear(failed ? std::ios::goodbit : is.rdstate());
  const std::string rest = upTo(is, '\n');
  if (failed) {
    g_loadlog->badValue(param.name, rest);
  } else if (!rest.empty()) {
    g_loadlog->extraText(param.name, rest);
  }
}

template <typename P>
void loadPlain(P& param, std::istream& is) {
  decltype(param.value) value{};
  if (is >> value) param.value = value;
  finishLine(param, is);
}

template <typename T, int TypeId>
void loadNumber(Param& param, std::istream& is) {
  auto& number = static_cast<NumericParam<T, TypeId>&>(param);
  loadPlain(number, is);
  if (number.value < number.min) number.value = number.min;
  if (number.value > number.max) number.value = number.max;
}

/// The pieces of the text between bars; none behind a bar at the end unless the last one counts.
std::vector<std::string> piecesOf(const std::string& text, bool countLastEmpty) {
  std::vector<std::string> pieces;
  std::istringstream is(text);
  for (std::string piece; std::getline(is, piece, '|');) pieces.push_back(piece);
  if (countLastEmpty && (text.empty() || text.back() == '|')) pieces.emplace_back();
  return pieces;
}

bool equal(const std::string& piece, const char* name) {
  return piece.size() == std::string(name).size() && ::strcasecmp(piece.c_str(), name) == 0;
}

void loadEnum(EnumParam& param, std::istream& is) {
  const std::string text = upTo(is, '\n');
  for (const std::string& piece : piecesOf(text, true)) {
    for (const Variant* row = param.variants; row->name != nullptr; ++row) {
      if (!equal(piece, row->name)) continue;
      param.value = row->value;
      return;
    }
  }
  param.value = param.defaultValue;
  g_loadlog->badValue(param.name, text);
}

void loadMask(MaskParam& param, std::istream& is) {
  const std::string text = upTo(is, '\n');
  param.value = 0;
  for (const std::string& piece : piecesOf(text, false)) {
    for (const Variant* row = param.variants; row->name != nullptr; ++row) {
      if (equal(piece, row->name)) param.value |= row->value;
    }
  }
  if (param.value != 0) return;
  param.value = param.defaultValue;
  g_loadlog->badValue(param.name, text);
}

void loadValue(Param& param, std::istream& is) {
  if (auto* mask = dynamic_cast<MaskParam*>(&param)) return loadMask(*mask, is);
  if (auto* variable = dynamic_cast<EnumParam*>(&param)) return loadEnum(*variable, is);
  if (auto* line = dynamic_cast<StStParam*>(&param)) {
    line->value = upTo(is, '\n');
    return;
  }
  if (auto* secret = dynamic_cast<QcdSParam*>(&param)) {
    secret->value = upTo(is, '\n');
    return;
  }
  switch (param.getTypeId()) {
    case TYPE_BOOL:
      return loadPlain(static_cast<SimpleParam<bool, TYPE_BOOL>&>(param), is);
    case TYPE_USHORT:
      return loadNumber<unsigned short, TYPE_USHORT>(param, is);
    case TYPE_UINT:
      return loadNumber<unsigned int, TYPE_UINT>(param, is);
    case TYPE_INT:
      return loadPlain(static_cast<SimpleParam<int, TYPE_INT>&>(param), is);
    case TYPE_STRING:
      return loadPlain(static_cast<SimpleParam<std::string, TYPE_STRING>&>(param), is);
  }
}

/// `name` is what reports call the group: unknown ones have a name of the file's.
bool loadBlock(ParamGroup& group, const std::string& name, std::istream& is) {
  int remaining = static_cast<int>(group.fileParams.size());
  const int total = remaining;
  for (;;) {
    std::string key = upTo(is, '=');
    if (key.empty()) {
      if (is.fail()) return false;
      continue;
    }
    while (!key.empty() && static_cast<unsigned char>(key[0]) <= ' ') key.erase(0, 1);
    const bool namesGroup = !key.empty() && key[0] == '/';
    if (namesGroup) key.erase(0, 1);
    if (key == "end") {
      is.ignore(1);
      if (remaining >= 1) g_loadlog->paramsMissing(remaining, total, name);
      return true;
    }
    Param* member = group.getParam(key);
    if (member == nullptr) {
      if (!namesGroup) (void)upTo(is, '\n');
      g_loadlog->unknownParam(key, name);
      ParamGroup unknown("");
      if (namesGroup) (void)loadBlock(unknown, key, is);
      continue;
    }
    if (!isGroup(*member)) {
      loadValue(*member, is);
    } else if (!loadBlock(static_cast<ParamGroup&>(*member), member->name, is)) {
      g_loadlog->paramFailed(key, name);
      return false;
    }
    --remaining;
  }
}

}  // namespace

void plainSave(ParamGroup& group, std::ostream& os, int indent) {
  const std::string blanks(4 * static_cast<size_t>(indent), ' ');
  os << blanks << "/" << group.name << "=" << std::endl;
  for (Param* param : group.fileParams) {
    if (isGroup(*param)) {
      plainSave(static_cast<ParamGroup&>(*param), os, indent + 1);
      continue;
    }
    os << blanks << "    " << param->name << "=";
    saveValue(*param, os);
    os << std::endl;
  }
  if (auto* list = dynamic_cast<ParamVector<USER_t>*>(&group)) {
    for (USER_t* user : list->items) plainSave(*user, os, indent + 1);
  }
  os << blanks << "end=" << std::endl;
}

bool plainLoad(ParamGroup& group, std::istream& is) { return loadBlock(group, group.name, is); }

}  // namespace testing_support
