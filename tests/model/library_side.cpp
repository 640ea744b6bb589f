#include "model/library_side.h"

#include <algorithm>
#include <cstring>

namespace plc::model {

namespace {

bool isSame(const QString& actual, const std::u16string& expected)
{
    return std::size_t(actual.size()) == expected.size() &&
           std::equal(expected.begin(), expected.end(),
                      reinterpret_cast<const char16_t*>(actual.utf16()));
}

bool isSame(const QByteArray& actual, const Bytes& expected)
{
    return std::size_t(actual.size()) == expected.size() &&
           (expected.empty() ||
            std::memcmp(actual.constData(), expected.data(), expected.size()) == 0);
}

} // namespace

QString toQt(const std::u16string& text)
{
    // QString's own conversions look at byte order marks.
    return QString(reinterpret_cast<const QChar*>(text.data()), int(text.size()));
}

QByteArray toQt(const Bytes& bytes)
{
    QByteArray out;
    out.resize(int(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), out.begin());
    return out;
}

RW_VAR toQt(const Variable& var)
{
    RW_VAR out;
    out.category = var.category;
    out.aux1 = var.aux1;
    out.aux2 = var.aux2;
    out.aux3 = var.aux3;
    out.deviceNo = var.deviceNo;
    out.result = var.result;
    out.label = toQt(var.label);
    out.subLabel = toQt(var.subLabel);
    out.dataType = var.dataType;
    out.address = var.address;
    out.station = var.station;
    out.length = var.length;
    out.aux12 = var.aux12;
    out.areaIndex = var.areaIndex;
    out.data = toQt(var.data);
    return out;
}

Protocol toQt(const Request& request)
{
    Protocol out;
    out.frame = toQt(request.frame);
    out.frameLength = request.frameLength;
    out.replyLength = request.replyLength;
    out.dataOffset = request.dataOffset;
    out.minReplyLength = request.minReplyLength;
    out.var = toQt(request.var);
    return out;
}

QList<Label_Type_Info> toQt(const std::vector<Symbol>& records)
{
    QList<Label_Type_Info> out;
    for (const Symbol& record : records) {
        Label_Type_Info info;
        info.name = toQt(record.name);
        info.typeFlags = record.typeFlags;
        info.offset = record.offset;
        info.dimCount = record.dimCount;
        info.memberCount = record.memberCount;
        for (int bound : record.arrayBounds)
            info.arrayBounds.append(bound);
        info.members = toQt(record.members);
        info.typeDef = toQt(record.typeDef);
        for (int area : record.areaInfo)
            info.areaInfo.append(area);
        out.append(info);
    }
    return out;
}

QList<HostVarItem> toQt(const std::vector<HostItem>& items)
{
    QList<HostVarItem> out;
    for (const HostItem& item : items) {
        HostVarItem hostItem;
        hostItem.station = item.station;
        hostItem.subLabel = toQt(item.subLabel);
        hostItem.label = toQt(item.label);
        hostItem.count = item.count;
        out.append(hostItem);
    }
    return out;
}

QList<RW_VAR> toQt(const std::vector<Variable>& list)
{
    QList<RW_VAR> out;
    for (const Variable& var : list)
        out.append(toQt(var));
    return out;
}

std::u16string fromQt(const QString& text)
{
    return std::u16string(reinterpret_cast<const char16_t*>(text.utf16()),
                          std::size_t(text.size()));
}

Bytes fromQt(const QByteArray& bytes)
{
    return Bytes(bytes.begin(), bytes.end());
}

Variable fromQt(const RW_VAR& var)
{
    Variable out;
    out.category = var.category;
    out.aux1 = var.aux1;
    out.aux2 = var.aux2;
    out.aux3 = var.aux3;
    out.deviceNo = var.deviceNo;
    out.result = var.result;
    out.label = fromQt(var.label);
    out.subLabel = fromQt(var.subLabel);
    out.dataType = var.dataType;
    out.address = var.address;
    out.station = var.station;
    out.length = var.length;
    out.aux12 = var.aux12;
    out.areaIndex = var.areaIndex;
    out.data = fromQt(var.data);
    return out;
}

std::vector<Variable> fromQt(const QList<RW_VAR>& list)
{
    std::vector<Variable> out;
    for (const RW_VAR& var : list)
        out.push_back(fromQt(var));
    return out;
}

std::vector<Symbol> fromQt(const QList<Label_Type_Info>& records)
{
    std::vector<Symbol> out;
    for (const Label_Type_Info& record : records) {
        Symbol symbol;
        symbol.name = fromQt(record.name);
        symbol.typeFlags = record.typeFlags;
        symbol.offset = record.offset;
        symbol.dimCount = record.dimCount;
        symbol.memberCount = record.memberCount;
        for (int bound : record.arrayBounds)
            symbol.arrayBounds.push_back(bound);
        symbol.members = fromQt(record.members);
        symbol.typeDef = fromQt(record.typeDef);
        for (int area : record.areaInfo)
            symbol.areaInfo.push_back(area);
        out.push_back(symbol);
    }
    return out;
}

Settings fromQt(const ComInfo& record)
{
    Settings out;
    static_assert(sizeof(record) == sizeof(out.word), "words without gaps");
    std::memcpy(out.word, &record, sizeof(out.word));
    return out;
}

bool isSame(const RW_VAR& actual, const Variable& expected)
{
    return actual.category == expected.category && actual.aux1 == expected.aux1 &&
           actual.aux2 == expected.aux2 && actual.aux3 == expected.aux3 &&
           actual.deviceNo == expected.deviceNo && actual.result == expected.result &&
           actual.dataType == expected.dataType && actual.address == expected.address &&
           actual.station == expected.station && actual.length == expected.length &&
           actual.aux12 == expected.aux12 && actual.areaIndex == expected.areaIndex &&
           isSame(actual.label, expected.label) && isSame(actual.subLabel, expected.subLabel) &&
           isSame(actual.data, expected.data);
}

bool isSame(const Protocol& actual, const Request& expected)
{
    return actual.frameLength == expected.frameLength &&
           actual.replyLength == expected.replyLength && actual.dataOffset == expected.dataOffset &&
           actual.minReplyLength == expected.minReplyLength && actual.extra1 == 0 &&
           actual.extra2 == 0 && actual.extra3 == 0 && isSame(actual.frame, expected.frame) &&
           isSame(actual.var, expected.var);
}

} // namespace plc::model
