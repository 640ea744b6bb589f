#include <gtest/gtest.h>

#include <ostream>

#include "tests/project/project_text.h"

namespace plc::project {
namespace {

using test::errorOf;
using test::projectText;

/// A document, or a part of one, and what is wrong with it.
struct Broken {
    const char* name;
    const char* json;
    const char* error;
};

void PrintTo(const Broken& broken, std::ostream* stream)
{
    *stream << broken.name;
}

std::string caseName(const testing::TestParamInfo<Broken>& info)
{
    return info.param.name;
}

class DocumentError : public testing::TestWithParam<Broken> {};

TEST_P(DocumentError, NamesPathAndExpectation)
{
    EXPECT_EQ(GetParam().error, errorOf(GetParam().json));
}

constexpr Broken kBrokenDocuments[] = {
    {"List", "[]", "found a list, expected an object"},
    {"MissingName", R"({"areas": [], "scopes": []})", "key \"name\" is missing"},
    {"BlankName", R"({"name": " ", "areas": [], "scopes": []})",
     "/name: found \" \", expected a name"},
    {"MisspeltKey", R"({"name": "n", "areas": [], "scops": []})",
     "/scops: unknown key \"scops\" (did you mean \"scopes\"?), expected one of name, areas, "
     "scopes, $schema, description, plc, settings, structures, cyclic"},
    {"UnknownKey", R"({"name": "n", "areas": [], "scopes": [], "zzzzzzzzz/~": 1})",
     "/zzzzzzzzz~1~0: unknown key \"zzzzzzzzz/~\", expected one of name, areas, scopes, $schema, "
     "description, plc, settings, structures, cyclic"},
    {"AreasNoList", R"({"name": "n", "areas": 3, "scopes": []})",
     "/areas: found 3, expected a list"},
    {"Port", R"({"name": "n", "areas": [], "scopes": [], "plc": {"port": 65536}})",
     "/plc/port: found 65536, expected a whole number from 0 to 65535"},
    {"PortFraction", R"({"name": "n", "areas": [], "scopes": [], "plc": {"port": 1.5}})",
     "/plc/port: found 1.5, expected a whole number from 0 to 65535"},
    {"PortText", R"({"name": "n", "areas": [], "scopes": [], "plc": {"port": "1200"}})",
     "/plc/port: found \"1200\", expected a whole number from 0 to 65535"},
    {"Address", R"({"name": "n", "areas": [], "scopes": [], "plc": {"address": ""}})",
     "/plc/address: found \"\", expected a host name or an IP address"},
    {"PlcNull", R"({"name": "n", "areas": [], "scopes": [], "plc": null})",
     "/plc: found null, expected an object"},
    {"MaxReadBytes", R"({"name": "n", "areas": [], "scopes": [], "settings": {"maxReadBytes": 0}})",
     "/settings/maxReadBytes: found 0, expected a whole number from 1 to 65528"},
    {"MultiStation", R"({"name": "n", "areas": [], "scopes": [], "settings": {"multiStation": 1}})",
     "/settings/multiStation: found 1, expected true or false"},
    {"ReconnectDelay",
     R"({"name": "n", "areas": [], "scopes": [],
         "settings": {"reconnectDelay": 5, "reconnectDelayLimit": 4}})",
     "/settings: found a reconnectDelayLimit of 4 ms, expected at least the reconnectDelay of 5 "
     "ms"},
    {"AreaIndex", R"({"name": "n", "areas": [{"index": 65536, "size": 1}], "scopes": []})",
     "/areas/0/index: found 65536, expected a whole number from 0 to 65535"},
    {"AreaSize", R"({"name": "n", "areas": [{"index": 1, "size": 0}], "scopes": []})",
     "/areas/0/size: found 0, expected a whole number from 1 to 2147483647"},
    {"AreaTwice",
     R"({"name": "n", "areas": [{"index": 1, "size": 1}, {"index": 1, "size": 2}], "scopes": []})",
     "/areas/1/index: area 1 is declared twice"},
    {"ScopeTwice",
     R"({"name": "n", "areas": [], "scopes": [{"name": "A", "variables": []},
                                              {"name": "A", "variables": []}]})",
     "/scopes/1/name: the name \"A\" is taken by /scopes/0/name"},
    {"ScopeName", R"({"name": "n", "areas": [], "scopes": [{"name": "A.B", "variables": []}]})",
     "/scopes/0/name: found \"A.B\", expected a name without . [ ] , = quotes, blanks or control "
     "characters"},
    {"ControlCharactersAreEscaped",
     R"({"name": "n", "areas": [], "scopes": [{"name": "A\nB", "variables": []}]})",
     "/scopes/0/name: found \"A\\u000aB\", expected a name without . [ ] , = quotes, blanks or "
     "control characters"},
};

INSTANTIATE_TEST_SUITE_P(Project, DocumentError, testing::ValuesIn(kBrokenDocuments), caseName);

class VariableError : public testing::TestWithParam<Broken> {};

TEST_P(VariableError, NamesPathAndExpectation)
{
    EXPECT_EQ(GetParam().error, errorOf(projectText(GetParam().json)));
}

constexpr Broken kBrokenVariables[] = {
    {"EmptyName", R"({"name": "", "type": "INT", "area": 1, "offset": 0})",
     "/scopes/0/variables/0/name: found \"\", expected a name without . [ ] , = quotes, blanks or "
     "control characters"},
    {"BracketInName", R"({"name": "a[1]", "type": "INT", "area": 1, "offset": 0})",
     "/scopes/0/variables/0/name: found \"a[1]\", expected a name without . [ ] , = quotes, blanks "
     "or control characters"},
    {"MissingArea", R"({"name": "a", "type": "INT", "offset": 0})",
     "/scopes/0/variables/0: key \"area\" is missing"},
    {"UnknownKey", R"({"name": "a", "type": "INT", "area": 1, "ofset": 0})",
     "/scopes/0/variables/0/ofset: unknown key \"ofset\" (did you mean \"offset\"?), expected one "
     "of name, type, area, offset, array, length, unit, description, signal, overlay"},
    {"UnitOfNoTextBehindAnEmptyOne",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "unit": ""},
        {"name": "b", "type": "INT", "area": 1, "offset": 2, "unit": 5})",
     "/scopes/0/variables/1/unit: found 5, expected a text"},
    {"LastOfSeveralOptionalKeys",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "unit": "m", "overlay": 1})",
     "/scopes/0/variables/0/overlay: found 1, expected true or false"},
    {"TypeOfNoText", R"({"name": "a", "type": 7, "area": 1, "offset": 0, "length": 3})",
     "/scopes/0/variables/0/type: found 7, expected a text"},
    {"FirstOfTwoMissingKeys", R"({"name": "a", "offset": 0, "unit": "m"})",
     "/scopes/0/variables/0: key \"type\" is missing"},
    {"SameNameTwice",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0},
        {"name": "a", "type": "INT", "area": 1, "offset": 2})",
     "/scopes/0/variables/1/name: the name \"a\" is taken by /scopes/0/variables/0/name"},
    {"MisspeltType", R"({"name": "a", "type": "BOLL", "area": 1, "offset": 0})",
     "/scopes/0/variables/0/type: found \"BOLL\", expected an IEC type or a structure of this file "
     "(did you mean \"BOOL\"?)"},
    {"TypeInLowerCase", R"({"name": "a", "type": "int", "area": 1, "offset": 0})",
     "/scopes/0/variables/0/type: found \"int\", expected an IEC type or a structure of this file "
     "(did you mean \"INT\"?)"},
    {"UnknownArea", R"({"name": "a", "type": "INT", "area": 3, "offset": 0})",
     "/scopes/0/variables/0/area: found 3, expected one of the areas of this file: 1, 2"},
    {"NegativeOffset", R"({"name": "a", "type": "INT", "area": 1, "offset": -1})",
     "/scopes/0/variables/0/offset: found -1, expected a whole number from 0 to 2147483647"},
    {"BehindTheArea", R"({"name": "a", "type": "DINT", "area": 2, "offset": 97})",
     "/scopes/0/variables/0: \"a\" ends at byte 101, but area 2 has 100 bytes"},
    {"ArrayBehindTheArea",
     R"({"name": "a", "type": "INT", "area": 2, "offset": 0, "array": [[0, 9], [1, 6]]})",
     "/scopes/0/variables/0: \"a\" ends at byte 120, but area 2 has 100 bytes"},
    {"BitWordBehindTheArea", R"({"name": "a", "type": "BIT", "area": 2, "offset": 1584})",
     "/scopes/0/variables/0: \"a\" ends at byte 101, but area 2 has 100 bytes"},
    {"NoDimension", R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "array": []})",
     "/scopes/0/variables/0/array: expected 1 to 8 dimensions, as in [[1, 8], [0, 3]]"},
    {"FlatArray", R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "array": [1, 8]})",
     "/scopes/0/variables/0/array/0: found 1, expected a list"},
    {"OneBound", R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "array": [[1]]})",
     "/scopes/0/variables/0/array/0: expected the lower and the upper bound, as in [1, 8]"},
    {"BoundsReversed", R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "array": [[2, 1]]})",
     "/scopes/0/variables/0/array/0: found the upper bound 1 below the lower bound 2"},
    {"UpperBoundTooHigh",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "array": [[0, 2147483647]]})",
     "/scopes/0/variables/0/array/0/1: found 2147483647, expected a whole number from -2147483648 "
     "to 2147483646"},
    {"TooManyElements",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0,
         "array": [[-2147483648, 2147483646], [-2147483648, 2147483646], [-2147483648, 2147483646]]})",
     "/scopes/0/variables/0/array: found more than 2147483647 elements"},
    {"StringWithoutLength", R"({"name": "a", "type": "STRING", "area": 1, "offset": 0})",
     "/scopes/0/variables/0: key \"length\" (characters of the STRING) is missing"},
    {"LengthOfAnInt", R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "length": 4})",
     "/scopes/0/variables/0/length: only STRING and WSTRING have a length"},
    {"StringTooLongForAnArray",
     R"({"name": "a", "type": "STRING", "area": 1, "offset": 0, "length": 255, "array": [[1, 2]]})",
     "/scopes/0/variables/0/length: found 256 bytes with the terminating zero; the elements of a "
     "STRING array lie 255 bytes apart"},
    {"WideStringTooLongForAnArray",
     R"({"name": "a", "type": "WSTRING", "area": 1, "offset": 0, "length": 127, "array": [[1, 2]]})",
     "/scopes/0/variables/0/length: found 256 bytes with the terminating zero; the elements of a "
     "WSTRING array lie 255 bytes apart"},
    {"SharedByte",
     R"({"name": "a", "type": "DINT", "area": 1, "offset": 4},
        {"name": "b", "type": "INT", "area": 1, "offset": 7})",
     "/scopes/0/variables/1: MAIN.b and MAIN.a (/scopes/0/variables/0) share byte 7 of memory; "
     "move one, or mark the one that lies there on purpose with \"overlay\": true"},
    {"SharedBit",
     R"({"name": "a", "type": "BIT", "area": 1, "offset": 163},
        {"name": "b", "type": "BIT", "area": 1, "offset": 163})",
     "/scopes/0/variables/1: MAIN.b and MAIN.a (/scopes/0/variables/0) share byte 11 of memory; "
     "move one, or mark the one that lies there on purpose with \"overlay\": true; a bit counts in "
     "the 16-bit word whose high byte is at offset / 16 and whose low byte is behind it"},
    {"BitsOfNeighbouringWords",
     R"({"name": "high", "type": "BIT", "area": 1, "offset": 184},
        {"name": "low", "type": "BIT", "area": 1, "offset": 160})",
     "/scopes/0/variables/1: MAIN.low and MAIN.high (/scopes/0/variables/0) share byte 11 of "
     "memory; move one, or mark the one that lies there on purpose with \"overlay\": true; a bit "
     "counts in the 16-bit word whose high byte is at offset / 16 and whose low byte is behind it"},
    {"BitInAWord",
     R"({"name": "word", "type": "WORD", "area": 1, "offset": 10},
        {"name": "bit", "type": "BIT", "area": 1, "offset": 175})",
     "/scopes/0/variables/1: MAIN.bit and MAIN.word (/scopes/0/variables/0) share byte 10 of "
     "memory; move one, or mark the one that lies there on purpose with \"overlay\": true; a bit "
     "counts in the 16-bit word whose high byte is at offset / 16 and whose low byte is behind it"},
    {"BitArrayThatMeetsItself",
     R"({"name": "a", "type": "BIT", "area": 1, "offset": 160, "array": [[0, 24]]})",
     "/scopes/0/variables/0: elements of MAIN.a share byte 11 of memory; a bit counts in the "
     "16-bit word whose high byte is at offset / 16 and whose low byte is behind it"},
    {"SignalKind",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "signal": {"kind": "sin"}})",
     "/scopes/0/variables/0/signal/kind: found \"sin\", expected one of constant, ramp, sine, "
     "square, counter, walk, clock (did you mean \"sine\"?)"},
    {"SignalWithoutKind", R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "signal": {}})",
     "/scopes/0/variables/0/signal: found an object, expected an object with the key \"kind\""},
    {"SignalParameter",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0,
         "signal": {"kind": "ramp", "from": 1, "to": 2, "perod": 3}})",
     "/scopes/0/variables/0/signal/perod: unknown key \"perod\" (did you mean \"period\"?), "
     "expected one of kind, from, to, period, phase, spread"},
    {"SignalPeriodZero",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0,
         "signal": {"kind": "square", "period": 0}})",
     "/scopes/0/variables/0/signal/period: found 0, expected at least 0.01"},
    {"CounterReversed",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0,
         "signal": {"kind": "counter", "from": 2, "to": 1, "interval": 1}})",
     "/scopes/0/variables/0/signal/to: found 1, expected at least the value of \"from\""},
    {"WalkReversed",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0,
         "signal": {"kind": "walk", "minimum": 2, "maximum": 1, "step": 1, "interval": 1}})",
     "/scopes/0/variables/0/signal/maximum: found 1, expected at least the value of \"minimum\""},
    {"RampOfText",
     R"({"name": "a", "type": "STRING", "area": 1, "offset": 0, "length": 3,
         "signal": {"kind": "ramp", "from": 1, "to": 2, "period": 3}})",
     "/scopes/0/variables/0/signal/kind: found \"ramp\", expected \"constant\" for a text"},
    {"ConstantOutOfRange",
     R"({"name": "a", "type": "INT", "area": 1, "offset": 0,
         "signal": {"kind": "constant", "value": [1, 32768]}})",
     "/scopes/0/variables/0/signal/value/1: found 32768, expected a value of type INT"},
    {"ConstantNotWhole",
     R"({"name": "a", "type": "UINT", "area": 1, "offset": 0,
         "signal": {"kind": "constant", "value": 0.5}})",
     "/scopes/0/variables/0/signal/value: found 0.5, expected a value of type UINT"},
    {"ConstantNoBoolean",
     R"({"name": "a", "type": "BOOL", "area": 1, "offset": 0,
         "signal": {"kind": "constant", "value": 1}})",
     "/scopes/0/variables/0/signal/value: found 1, expected true or false"},
    {"ConstantEmptyList",
     R"({"name": "a", "type": "BOOL", "area": 1, "offset": 0,
         "signal": {"kind": "constant", "value": []}})",
     "/scopes/0/variables/0/signal/value: expected at least one value"},
    {"ConstantTextTooLong",
     R"({"name": "a", "type": "STRING", "area": 1, "offset": 0, "length": 3,
         "signal": {"kind": "constant", "value": "four"}})",
     "/scopes/0/variables/0/signal/value: found \"four\", expected at most 3 characters"},
    {"ConstantTextNotLatin1",
     R"({"name": "a", "type": "STRING", "area": 1, "offset": 0, "length": 3,
         "signal": {"kind": "constant", "value": "€"}})",
     "/scopes/0/variables/0/signal/value: found \"€\", expected characters of Latin-1; a WSTRING "
     "holds others"},
};

INSTANTIATE_TEST_SUITE_P(Project, VariableError, testing::ValuesIn(kBrokenVariables), caseName);

class StructureError : public testing::TestWithParam<Broken> {};

TEST_P(StructureError, NamesPathAndExpectation)
{
    EXPECT_EQ(GetParam().error, errorOf(projectText("", GetParam().json)));
}

constexpr Broken kBrokenStructures[] = {
    {"NoMembers", R"({"name": "S", "size": 2, "members": []})",
     "/structures/0/members: expected at least one member"},
    {"NameOfAType",
     R"({"name": "INT", "size": 2, "members": [{"name": "a", "type": "INT", "offset": 0}]})",
     "/structures/0/name: \"INT\" is the name of an IEC type"},
    {"SameNameTwice",
     R"({"name": "S", "size": 2, "members": [{"name": "a", "type": "INT", "offset": 0}]},
        {"name": "S", "size": 2, "members": [{"name": "a", "type": "INT", "offset": 0}]})",
     "/structures/1/name: the name \"S\" is taken by /structures/0/name"},
    {"MemberWithArea",
     R"({"name": "S", "size": 2, "members": [{"name": "a", "type": "INT", "offset": 0, "area": 1}]})",
     "/structures/0/members/0/area: unknown key \"area\", expected one "
     "of name, type, offset, array, length, unit, description, signal, overlay"},
    {"MemberBehindTheEnd",
     R"({"name": "S", "size": 4, "members": [{"name": "a", "type": "DINT", "offset": 1}]})",
     "/structures/0/members/0: \"a\" ends at byte 5, but structure \"S\" has 4 bytes"},
    {"MemberOfTheLargestSize",
     R"({"name": "S", "size": 2147483647, "members": [{"name": "a", "type": "DINT", "offset": 1}]},
        {"name": "T", "size": 4, "members": [{"name": "a", "type": "S", "offset": 2147483647,
                                              "array": [[1, 2147483646]]}]})",
     "/structures/1/members/0: \"a\" ends at byte 4611686014132420609, but structure \"T\" has 4 "
     "bytes"},
    {"MembersShareAByte",
     R"({"name": "S", "size": 4, "members": [{"name": "a", "type": "DINT", "offset": 0},
                                             {"name": "b", "type": "BYTE", "offset": 2}]})",
     "/structures/0/members/1: S.b and S.a (/structures/0/members/0) share byte 2 of memory; move "
     "one, or mark the one that lies there on purpose with \"overlay\": true"},
    {"BitMember",
     R"({"name": "S", "size": 4, "members": [{"name": "a", "type": "BIT", "offset": 0}]})",
     "/structures/0/members/0/type: found \"BIT\"; members have byte offsets, use BOOL or a WORD"},
    {"ContainsItself",
     R"({"name": "S", "size": 4, "members": [{"name": "a", "type": "S", "offset": 0}]})",
     "/structures/0/members/0/type: structure \"S\" contains itself: S > S"},
    {"ContainsItselfInACircle",
     R"({"name": "A", "size": 4, "members": [{"name": "m", "type": "B", "offset": 0}]},
        {"name": "B", "size": 4, "members": [{"name": "m", "type": "C", "offset": 0}]},
        {"name": "C", "size": 4, "members": [{"name": "m", "type": "B", "offset": 0}]})",
     "/structures/2/members/0/type: structure \"B\" contains itself: B > C > B"},
    {"SignalOfAStructure",
     R"({"name": "A", "size": 4, "members": [{"name": "m", "type": "DINT", "offset": 0}]},
        {"name": "B", "size": 4, "members": [{"name": "m", "type": "A", "offset": 0,
                                              "signal": {"kind": "constant", "value": 1}}]})",
     "/structures/1/members/0/signal: a structure has no signal of its own; its members may have "
     "one"},
};

INSTANTIATE_TEST_SUITE_P(Project, StructureError, testing::ValuesIn(kBrokenStructures), caseName);

class CyclicError : public testing::TestWithParam<Broken> {};

TEST_P(CyclicError, NamesPathAndReason)
{
    EXPECT_EQ(GetParam().error, errorOf(projectText(
                                    R"({"name": "speed", "type": "INT", "area": 1, "offset": 0},
                     {"name": "tank", "type": "Tank", "area": 1, "offset": 2, "array": [[1, 3]]},
                     {"name": "large", "type": "BYTE", "area": 1, "offset": 100,
                      "array": [[0, 399]]})",
                                    R"({"name": "Tank", "size": 4, "members":
                      [{"name": "level", "type": "REAL", "offset": 0}]})",
                                    GetParam().json)));
}

constexpr Broken kBrokenCyclic[] = {
    {"NoLabel", "3", "/cyclic/0: found 3, expected a label or an object with the key \"label\""},
    {"UnknownKey", R"({"label": "MAIN.speed", "count": 1})",
     "/cyclic/0/count: unknown key \"count\", expected one of label, elements, station"},
    {"MisspeltVariable", R"("MAIN.sped")",
     "/cyclic/0: label \"MAIN.sped\": scope \"MAIN\" has no \"sped\" (did you mean \"speed\"?)"},
    {"RangeOutOfBounds", R"("MAIN.tank[1..4].level")",
     "/cyclic/0: label \"MAIN.tank[1..4].level\": the subscripts of \"tank\" must lie within "
     "[1..3]"},
    {"TooManyElements", R"({"label": "MAIN.large[390]", "elements": 11})",
     "/cyclic/0/label: label \"MAIN.large[390]\": 11 elements from here, but the array ends after "
     "10"},
    {"StationWithoutStations", R"({"label": "MAIN.speed", "station": 1})",
     "/cyclic/0/station: a station of its own needs \"multiStation\": true in the settings"},
};

INSTANTIATE_TEST_SUITE_P(Project, CyclicError, testing::ValuesIn(kBrokenCyclic), caseName);

TEST(ProjectErrors, OverlayLetsVariablesShareMemory)
{
    EXPECT_EQ("", errorOf(projectText(
                      R"({"name": "word", "type": "WORD", "area": 1, "offset": 10},
                         {"name": "b3", "type": "BIT", "area": 1, "offset": 163, "overlay": true},
                         {"name": "b4", "type": "BIT", "area": 1, "offset": 164, "overlay": true})")));
}

TEST(ProjectErrors, RepeatedKeyIsFoundByItsPlace)
{
    EXPECT_EQ("line 2, column 16: key \"name\" stands twice in one object",
              errorOf("{\"areas\": [], \"scopes\": [{\"name\": \"\", \"variables\": []}],\n"
                      " \"name\": \"\\\"\", \"name\" : \"b\"}"));
}

TEST(ProjectErrors, KeySpeltWithEscapesIsTheSameKey)
{
    EXPECT_EQ("line 1, column 48: key \"name\" stands twice in one object",
              errorOf(R"({"name": "a", "areas": [], "scopes": [],       "n\u0061me": "b"})"));
    EXPECT_EQ("line 1, column 25: key \"a/\\u0009\\\\\" stands twice in one object",
              errorOf(R"({"a\/\t\\": "a",        "a/\u0009\u005C": "b"})"));
    // Above the first plane an escape has two halves; the other spelling is four bytes of UTF-8.
    EXPECT_NE(std::string::npos,
              errorOf("{\"\\ud83d\\ude00\": 1, \"\xf0\x9f\x98\x80\": 2}").find("stands twice"));
}

TEST(ProjectErrors, KeysWhoseEscapesDifferAreNoRepetition)
{
    EXPECT_EQ("key \"name\" is missing",
              errorOf(R"({"areas": [], "scopes": [], "description": "\u0061"})"));
    EXPECT_EQ(std::string::npos,
              errorOf(R"({"\u0061": 1, "\u0062": 2, "\\u0061": 3})").find("twice"));
}

TEST(ProjectErrors, EqualKeysOfDifferentObjectsAreNoRepetition)
{
    EXPECT_EQ("", errorOf(R"({"name": "name", "areas": [{"index": 1, "size": 1},
                             {"index": 2, "size": 1}],
                             "scopes": [{"name": "name", "variables": []}]})"));
}

TEST(ProjectErrors, EqualAddressesInDifferentAreasAreNotShared)
{
    EXPECT_EQ("", errorOf(projectText(R"({"name": "a", "type": "WORD", "area": 1, "offset": 10},
                                         {"name": "b", "type": "WORD", "area": 2, "offset": 10})")));
}

TEST(ProjectErrors, VariablesOfDifferentScopesAreCompared)
{
    EXPECT_EQ(
        "/scopes/1/variables/0: B.b and A.a (/scopes/0/variables/0) share byte 1 of memory; "
        "move one, or mark the one that lies there on purpose with \"overlay\": true",
        errorOf(R"({"name": "n", "areas": [{"index": 0, "size": 9}], "scopes": [
                  {"name": "A", "variables":
                      [{"name": "a", "type": "INT", "area": 0, "offset": 0}]},
                  {"name": "B", "variables":
                      [{"name": "b", "type": "INT", "area": 0, "offset": 1}]}]})"));
}

/// The error of a project with an array in an area of 2 GB and a slice of it.
std::string sliceError(const char* type, const char* elements, int maxReadBytes = 65528)
{
    return errorOf(QByteArray(R"({"name": "n", "settings": {"maxReadBytes": )") +
                   QByteArray::number(maxReadBytes) +
                   R"(}, "areas": [{"index": 1, "size": 2147483647}], "scopes": [{"name": "A",
                       "variables": [{"name": "v", "area": 1, "offset": 0,
                       "array": [[0, 8400000]], )" +
                   type + R"(}]}],
                       "cyclic": [{"label": "A.v[0]", "elements": )" +
                   elements + "}]}");
}

TEST(ProjectErrors, SlicesOfMoreThan16MebibytesAreRefused)
{
    EXPECT_EQ("", sliceError(R"("type": "DINT")", "4194304"));
    EXPECT_EQ(
        "/cyclic/0/label: label \"A.v[0]\": 4194305 elements are 16777220 bytes as the driver "
        "reads them; one value has at most 16777216 (16 MiB)",
        sliceError(R"("type": "DINT")", "4194305"));
    // The driver's buffer has a register for each byte, and a byte for each truth value.
    EXPECT_EQ("", sliceError(R"("type": "USINT")", "8388608"));
    EXPECT_NE("", sliceError(R"("type": "USINT")", "8388609"));
    EXPECT_EQ("", sliceError(R"("type": "BOOL")", "8400001"));
    // 65793 texts: 65792 x 255 + 11 bytes, one more for a whole register.
    EXPECT_EQ("", sliceError(R"("type": "STRING", "length": 10)", "65793"));
    EXPECT_EQ(
        "/cyclic/0/label: label \"A.v[0]\": 65794 elements are 16777226 bytes as the driver "
        "reads them; one value has at most 16777216 (16 MiB)",
        sliceError(R"("type": "STRING", "length": 10)", "65794"));
}

TEST(ProjectErrors, SlicesOfMoreThan65536PiecesAreRefused)
{
    EXPECT_EQ("", sliceError(R"("type": "BYTE")", "6553600", 100));
    EXPECT_EQ(
        "/cyclic/0/label: label \"A.v[0]\": 6553601 elements fall into 65537 pieces of at "
        "most 100 bytes (maxReadBytes); one value has at most 65536 pieces",
        sliceError(R"("type": "BYTE")", "6553601", 100));
}

TEST(ProjectErrors, NumbersOfElementsBeyondTheArrayAreRefused)
{
    EXPECT_EQ(
        "/cyclic/0/label: label \"A.v[0]\": 2147483646 elements from here, but the array ends "
        "after 8400001",
        sliceError(R"("type": "BYTE")", "2147483646"));
}

/// The error of a project with these slices of an array of 16 MiB, each {first, elements}.
std::string slicesError(const std::vector<std::pair<int, int>>& slices, int maxReadBytes)
{
    QByteArray cyclic;
    for (const auto& slice : slices) {
        cyclic += (cyclic.isEmpty() ? "" : ", ") + QByteArray(R"({"label": "A.v[)") +
                  QByteArray::number(slice.first) + R"(]", "elements": )" +
                  QByteArray::number(slice.second) + "}";
    }
    return errorOf(R"({"name": "n", "settings": {"maxReadBytes": )" +
                   QByteArray::number(maxReadBytes) +
                   R"(}, "areas": [{"index": 1, "size": 16777216}], "scopes": [{"name": "A",
                       "variables": [{"name": "v", "area": 1, "offset": 0, "type": "DINT",
                       "array": [[0, 4194303]]}]}], "cyclic": [)" +
                   cyclic + "]}");
}

TEST(ProjectErrors, CyclicValuesTogetherHaveALimit)
{
    std::vector<std::pair<int, int>> slices(16, {0, 4194304});
    EXPECT_EQ("", slicesError(slices, 65528));
    slices.push_back({5, 1});
    EXPECT_EQ(
        "/cyclic/16/label: label \"A.v[5]\": the cyclic values up to here have 268435460 "
        "bytes, and may have 268435456",
        slicesError(slices, 65528));
    // Slices of 65,536 pieces: the sixteenth ends at 1,048,576.
    slices.assign(16, {0, 65536});
    EXPECT_EQ(
        "/cyclic/15/label: label \"A.v[0]\": the cyclic values up to here fall into 1048576 "
        "pieces of at most 4 bytes (maxReadBytes), and may fall into 1000000",
        slicesError(slices, 4));
}

TEST(ProjectErrors, StructuresThatMultiplyAreRefused)
{
    // Ten members each: S6 stands for a million values, S16 for 10^16.
    QByteArray structures;
    for (int level = 1; level <= 16; ++level) {
        structures += (level == 1 ? "" : ", ") + QByteArray(R"({"name": "S)") +
                      QByteArray::number(level) + R"(", "size": 1, "members": [)";
        for (int member = 0; member < 10; ++member) {
            structures +=
                (member == 0 ? "" : ", ") + QByteArray(R"({"name": "m)") +
                QByteArray::number(member) + R"(", "offset": 0, "overlay": true, "type": ")" +
                (level == 1 ? QByteArray("BYTE") : "S" + QByteArray::number(level - 1)) + R"("})";
        }
        structures += "]}";
    }
    const auto variable = [](const char* name, const char* type, const char* more = "") {
        return QByteArray(R"({"name": ")") + name +
               R"(", "area": 1, "offset": 0, "overlay": true, )" + R"("type": ")" + type + "\"" +
               more + "}";
    };
    EXPECT_EQ("",
              errorOf(projectText(variable("a", "S6", R"(, "array": [[1, 1000]])"), structures)));
    EXPECT_EQ(
        "/scopes/0/variables/1: MAIN.b stands for 1 values, its structures taken apart, and "
        "the project with it for more than the 1000000 that it may have",
        errorOf(projectText(variable("a", "S6") + "," + variable("b", "BYTE"), structures)));
    EXPECT_EQ(
        "/scopes/0/variables/0: MAIN.a stands for at least 1000000000000000 values, its "
        "structures taken apart, and the project with it for more than the 1000000 that it "
        "may have",
        errorOf(projectText(variable("a", "S16"), structures)));
}

TEST(ProjectErrors, RangesStandForAtMost100000Labels)
{
    const QByteArray variables =
        R"({"name": "large", "type": "BYTE", "area": 1, "offset": 0, "array": [[0, 9], [0, 99]]})";
    QByteArray cyclic = R"("MAIN.large[0..9,0..99]")";
    for (int i = 1; i < 100; ++i)
        cyclic += R"(, "MAIN.large[0..9,0..99]")";
    EXPECT_EQ(100000, test::goodProject(projectText(variables, "", cyclic)).cyclic.size());
    EXPECT_EQ("/cyclic/100: label \"MAIN.large[0..9,0..1]\": stands for more than 0 labels",
              errorOf(projectText(variables, "", cyclic + R"(, "MAIN.large[0..9,0..1]")")));
}

} // namespace
} // namespace plc::project
