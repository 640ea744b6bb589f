// Labels against symbol tables that the same input builds, sound ones and ones that break what
// hosts promise. Each label is resolved by the model of the tests as well.

#include "driver/label_access.h"
#include "fuzz_host.h"
#include "model/label_model.h"

namespace {

using plc::fuzz::FuzzInput;
using plc::fuzz::GuardedMemory;
using plc::fuzz::require;
using plc::model::Place;
using plc::model::Symbol;

constexpr int kMostLevels = 5;
constexpr int kMostLabels = 64;

/// Few and short names, so that labels meet symbols.
std::u16string name(FuzzInput& input)
{
    static constexpr const char16_t* kNames[] = {u"a",    u"b",      u"ab", u"",
                                                 u"a[1]", u"\u00E9", u"a]", u"["};
    return kNames[input.below(8)];
}

std::vector<int> bounds(FuzzInput& input, int count)
{
    std::vector<int> out;
    for (int i = 0; i < count; ++i)
        out.push_back(i == 0 && !input.flag() ? 10 : input.number());
    return out;
}

Symbol symbol(FuzzInput& input, int levels)
{
    Symbol out;
    out.name = name(input);
    const int shape = input.byte();
    out.typeFlags = std::uint16_t(input.below(20));
    if (shape & 1)
        out.typeFlags = std::uint16_t(out.typeFlags | 0x100);
    if (shape & 2)
        out.typeFlags = std::uint16_t(out.typeFlags | 0x200);
    out.offset = input.number();
    if (shape & 1) {
        out.dimCount = shape & 4 ? input.number() : input.below(4);
        const int sound = 1 + 2 * std::max(0, std::min(out.dimCount, 4));
        out.arrayBounds = bounds(input, shape & 8 ? input.below(10) : sound);
    }
    if (levels > 0) {
        if (shape & 16)
            out.typeDef.push_back(symbol(input, levels - 1));
        const int members = shape & 32 ? input.below(4) : 0;
        for (int i = 0; i < members; ++i)
            out.members.push_back(symbol(input, levels - 1));
    }
    out.memberCount = std::uint32_t(shape & 64 ? input.number() : int(out.members.size()));
    if (!(shape & 128))
        out.areaInfo.push_back(input.number());
    return out;
}

Symbol scope(FuzzInput& input)
{
    Symbol out = symbol(input, kMostLevels);
    if (!out.typeDef.empty())
        out.typeDef[0].memberCount = std::uint32_t(out.typeDef[0].members.size());
    return out;
}

/// Letters of which labels are made, and now and then any other.
std::u16string label(FuzzInput& input)
{
    static constexpr char16_t kLetters[] = u"ab.[],0123456789-+ xA\u00E9\u00A0";
    std::u16string out;
    const int size = input.below(40);
    for (int i = 0; i < size; ++i) {
        const int letter = input.byte();
        const int letters = int(sizeof kLetters / sizeof kLetters[0]) - 1;
        out.push_back(letter < 240 ? kLetters[letter % letters]
                                   : char16_t(input.byte() << 8 | input.byte()));
    }
    return out;
}

/// Unlike QString's own conversions, without a look at byte order marks.
QString toDriver(const std::u16string& text)
{
    return QString(reinterpret_cast<const QChar*>(text.data()), int(text.size()));
}

Label_Type_Info toDriver(const Symbol& symbol)
{
    Label_Type_Info out;
    out.name = toDriver(symbol.name);
    out.typeFlags = symbol.typeFlags;
    out.offset = symbol.offset;
    out.dimCount = symbol.dimCount;
    out.memberCount = symbol.memberCount;
    for (int bound : symbol.arrayBounds)
        out.arrayBounds.append(bound);
    for (const Symbol& member : symbol.members)
        out.members.append(toDriver(member));
    for (const Symbol& type : symbol.typeDef)
        out.typeDef.append(toDriver(type));
    for (int area : symbol.areaInfo)
        out.areaInfo.append(area);
    return out;
}

void compare(const plc::model::LabelModel& model, const std::u16string& label,
             GuardedMemory& memory)
{
    const QString text = memory.text(toDriver(label));
    Place expected;
    expected.dataType = 0xEE;
    expected.address = -11;
    expected.areaIndex = -22;
    ControlInformationM info = {0xEE, -11, -22};
    const int expectedResult = model.resolve(label, expected);
    const int result = get_label_address_info(text, info);
    require(result == expectedResult, "a label resolves as the model says");
    require(info.dataType == expected.dataType && info.address == expected.address &&
                info.areaIndex == expected.areaIndex,
            "a label leads where the model says");
    require(PLCAddressChangeIntef(0, text) == (result == 0 ? info.address : -1),
            "the address entry agrees with the resolution");
    QByteArray value;
    require(GetRegisterData(text, 0, 0, 0, &value, 3) == (result == 0 ? 1 : 0),
            "a value is read when its label resolves");
}

void ignoreMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qInstallMessageHandler(ignoreMessage);
    FuzzInput input(data, size);
    PLC_driver.~Communication_Protocol();
    new (&PLC_driver) Communication_Protocol;
    GuardedMemory memory;
    plc::model::LabelModel model;
    for (int i = 0; i < kMostLabels && !input.isAtEnd(); ++i) {
        if (i == 0 || input.below(16) == 0) {
            std::vector<Symbol> records;
            const int scopes = 1 + input.below(3);
            for (int k = 0; k < scopes; ++k)
                records.push_back(scope(input));
            model.pass(records);
            QList<Label_Type_Info> list;
            for (const Symbol& record : records)
                list.append(toDriver(record));
            PassVarName_2(&list);
        }
        compare(model, label(input), memory);
    }
    return 0;
}
