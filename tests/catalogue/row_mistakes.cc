// Rows as a catalogue has them. Each line with a comment behind the row must not compile, for the
// reason in the comment; every other one must. Compiled by row_mistakes.sh only.
#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

// clang-format off
inline constexpr Variant TABLE[]       = {{1, "ONE"}, {2, "TWO"}, {0, nullptr}};
inline constexpr Variant NAME_TWICE[]  = {{1, "ONE"}, {2, "ONE"}, {0, nullptr}};
inline constexpr Variant VALUE_TWICE[] = {{1, "ONE"}, {1, "TWO"}, {0, nullptr}};
inline constexpr Variant NOT_CLOSED[]  = {{1, "ONE"}, {2, "TWO"}};

void rows(ParamGroup& group) {
  const UIntParam right1(group, Label("A\0" "a number"), {Default{5}, Range{5, 4294967295}});
  const PortParam right2(group, Label("A\0"), {Default{65535}, Range{0, 65535}}, FileOnly);
  const UIntParam right3(group, Label("A\0"), {Default{7}, Range{7, 7}});
  const EnumParam right4(group, Label("A\0" "a name"), {2, TABLE}, FileOnly);
  const BoolParam right5(group, Label("A\0"), true);
  const QcdSParam right6(group, Label("A\0"), "");

  const UIntParam wrong01(group, Label("A\0"), {Default{5}, Range{6, 4}});      // the range is empty
  const PortParam wrong02(group, Label("A\0"), {Default{5}, Range{0, 65536}});  // the range does not fit the type
  const UIntParam wrong03(group, Label("A\0"), {Default{4}, Range{5, 600}});    // the default is out of the range
  const UIntParam wrong04(group, Label("A\0"), {Default{601}, Range{5, 600}});  // the default is out of the range
  const PortParam wrong05(group, Label("A\0"), {Default{66000}, Range{1, 65535}});  // the default is out of the range
  const EnumParam wrong06(group, Label("A\0"), {0, TABLE});        // the default is not in the table
  const EnumParam wrong07(group, Label("A\0"), {1, NAME_TWICE});   // the table is not one of variants
  const EnumParam wrong08(group, Label("A\0"), {1, VALUE_TWICE});  // the table is not one of variants
  const EnumParam wrong09(group, Label("A\0"), {1, NOT_CLOSED});   // the table is not one of variants
  const BoolParam wrong10(group, Label("A"), true);                 // no zero behind the name
  const BoolParam wrong11(group, Label("\0" "a flag"), true);       // no name before the zero
  const BoolParam wrong12(group, Label("A\0" "a flag\0"), true);    // text behind the meaning
  const UIntParam wrong13(group, Label("A\0"), Default{5}, Range{5, 600});  // no matching function for call
  const EnumParam wrong14(group, Label("A\0"), 0, TABLE);                   // no matching function for call
}
// clang-format on

}  // namespace LPARAMS::Server
