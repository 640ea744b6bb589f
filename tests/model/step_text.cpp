#include "model/step_text.h"

#include <cstdio>
#include <sstream>

namespace plc::model {

namespace {

std::string text(int number)
{
    return std::to_string(number);
}

std::string text(bool value)
{
    return value ? "true" : "false";
}

std::string text(const std::u16string& characters)
{
    std::string out = "u\"";
    for (char16_t character : characters) {
        char escaped[8];
        if (character == u'"' || character == u'\\') {
            out += '\\';
            out += char(character);
        } else if (character >= 0x20 && character < 0x7F) {
            out += char(character);
        } else if (character >= 0xA0) {
            std::snprintf(escaped, sizeof escaped, "\\u%04X", unsigned(character));
            out += escaped;
        } else {
            std::snprintf(escaped, sizeof escaped, "\\%03o", unsigned(character));
            out += escaped;
        }
    }
    return out + '"';
}

std::string text(const Bytes& bytes)
{
    std::string out = "Bytes{";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        char byte[8];
        std::snprintf(byte, sizeof byte, "%s0x%02X", i == 0 ? "" : ", ", unsigned(bytes[i]));
        out += byte;
    }
    return out + "}";
}

std::string text(const std::vector<int>& numbers)
{
    std::string out = "{";
    for (std::size_t i = 0; i < numbers.size(); ++i)
        out += (i == 0 ? "" : ", ") + std::to_string(numbers[i]);
    return out + "}";
}

template <typename Record>
std::string listText(const char* type, const std::vector<Record>& records);

std::string text(const Symbol& symbol)
{
    return "Symbol{" + text(symbol.name) + ", " + text(int(symbol.typeFlags)) + ", " +
           text(symbol.offset) + ", " + text(symbol.dimCount) + ", " +
           std::to_string(symbol.memberCount) + "u, " + text(symbol.arrayBounds) + ", " +
           listText("", symbol.members) + ", " + listText("", symbol.typeDef) + ", " +
           text(symbol.areaInfo) + "}";
}

std::string text(const HostItem& item)
{
    return "HostItem{" + text(int(item.station)) + ", " + text(item.subLabel) + ", " +
           text(item.label) + ", " + text(item.count) + "}";
}

std::string text(const Variable& var)
{
    return "Variable{" + text(var.category) + ", " + text(var.aux1) + ", " + text(var.aux2) + ", " +
           text(var.aux3) + ", " + text(var.deviceNo) + ", " + text(var.result) + ", " +
           text(var.label) + ", " + text(var.subLabel) + ", " + text(var.dataType) + ", " +
           text(var.address) + ", " + text(var.station) + ", " + text(var.length) + ", " +
           text(var.aux12) + ", " + text(var.areaIndex) + ", " + text(var.data) + "}";
}

template <typename Record>
std::string listText(const char* type, const std::vector<Record>& records)
{
    std::string out = std::string(type) + "{";
    for (std::size_t i = 0; i < records.size(); ++i)
        out += (i == 0 ? "" : ", ") + text(records[i]);
    return out + "}";
}

std::string text(const std::vector<Symbol>& records)
{
    return listText("std::vector<Symbol>", records);
}

std::string text(const std::vector<HostItem>& items)
{
    return listText("std::vector<HostItem>", items);
}

std::string text(const ReplyPlan& plan)
{
    return "ReplyPlan{ReplyPlan::Kind(" + text(int(plan.kind)) + "), " + text(plan.number) + ", " +
           std::to_string(plan.seed) + "u}";
}

std::string text(const std::vector<Variable>& group)
{
    return listText("std::vector<Variable>", group);
}

template <typename Value>
std::string text(const std::optional<Value>& value)
{
    return value ? text(*value) : "std::nullopt";
}

template <typename... Values>
std::string call(const char* name, const Values&... values)
{
    std::string out = std::string(name) + "{";
    bool isFirst = true;
    const auto add = [&out, &isFirst](const std::string& value) {
        out += (isFirst ? "" : ", ") + value;
        isFirst = false;
    };
    (add(text(values)), ...);
    return out + "}";
}

struct StepPrinter {
    std::string operator()(const SetSettings& s) const { return call("SetSettings", s.record); }
    std::string operator()(const ChangeWord& s) const
    {
        return call("ChangeWord", s.record, s.word, s.value);
    }
    std::string operator()(const SetCallbacks& s) const
    {
        return call("SetCallbacks", s.result, s.failure);
    }
    std::string operator()(const EnableStation& s) const
    {
        return call("EnableStation", s.station, s.enable, s.byEthernetName);
    }
    std::string operator()(const PassSymbols& s) const { return call("PassSymbols", s.records); }
    std::string operator()(const AddRead& s) const { return call("AddRead", s.var); }
    std::string operator()(const AddWrite& s) const { return call("AddWrite", s.var, s.append); }
    std::string operator()(const AddOnce& s) const { return call("AddOnce", s.var, s.append); }
    std::string operator()(const RebuildReadList& s) const
    {
        return call("RebuildReadList", s.items);
    }
    std::string operator()(const Cut& s) const { return call("Cut", s.total, s.maxLen, s.var); }
    std::string operator()(const Fold& s) const
    {
        return call("Fold", s.group, s.maxLen, s.isSorted);
    }
    std::string operator()(const AskAddress& s) const { return call("AskAddress", s.label); }
    std::string operator()(const ResolveLabel& s) const { return call("ResolveLabel", s.label); }
    std::string operator()(const ReadValue& s) const
    {
        return call("ReadValue", s.label, s.count, s.hasBuffer);
    }
    std::string operator()(const WriteValue& s) const
    {
        return call("WriteValue", s.label, s.subLabel, s.station, s.value, s.count, s.category,
                    s.aux1);
    }
    std::string operator()(const Ask&) const { return "Ask{}"; }
    std::string operator()(const ChangeRequest& s) const
    {
        return "ChangeRequest{ChangeRequest::Member(" + text(int(s.member)) + "), " +
               text(s.value) + "}";
    }
    std::string operator()(const TakeReply& s) const
    {
        return call("TakeReply", s.bytes, s.receivedOffset, s.plan);
    }
};

} // namespace

std::string testText(const Sequence& sequence)
{
    std::ostringstream out;
    out << "TEST(FoundSequences, NameWhatWasWrong)\n{\n    expectSame({\n";
    for (const Step& step : sequence)
        out << "        " << std::visit(StepPrinter(), step) << ",\n";
    out << "    });\n}\n";
    return out.str();
}

} // namespace plc::model
