#include "model/differences.h"

#include "model/library_side.h"

namespace plc::model {

namespace {

std::string hexOf(const QByteArray& bytes)
{
    constexpr int kShown = 64;
    std::string text;
    for (int i = 0; i < qMin(kShown, int(bytes.size())); ++i)
        text += (i ? " " : "") + std::string(bytes.mid(i, 1).toHex().constData());
    return text + (bytes.size() > kShown ? " ..." : "");
}

std::string textOf(const RW_VAR& var)
{
    std::ostringstream out;
    out << "category " << var.category << ", aux1 " << var.aux1 << ", aux2 " << var.aux2
        << ", aux3 " << var.aux3 << ", deviceNo " << var.deviceNo << ", result " << var.result
        << ", label \"" << var.label.toStdString() << "\", subLabel \""
        << var.subLabel.toStdString() << "\", dataType " << var.dataType << ", address "
        << var.address << ", station " << var.station << ", length " << var.length << ", aux12 "
        << var.aux12 << ", areaIndex " << var.areaIndex << ", data " << hexOf(var.data);
    return out.str();
}

std::string textOf(const Protocol& request)
{
    std::ostringstream out;
    out << "frameLength " << request.frameLength << ", replyLength " << request.replyLength
        << ", dataOffset " << request.dataOffset << ", minReplyLength " << request.minReplyLength
        << ", frame " << hexOf(request.frame) << ", var: " << textOf(request.var);
    return out.str();
}

} // namespace

void Differences::checkRecord(const char* what, const Variable& expected, const RW_VAR& actual)
{
    if (!isSame(actual, expected))
        m_text << what << ":\n  model  " << textOf(toQt(expected)) << "\n  driver "
               << textOf(actual) << '\n';
}

void Differences::checkList(const char* what, const std::vector<Variable>& expected,
                            const QList<RW_VAR>& actual)
{
    check(what, expected.size(), std::size_t(actual.size()));
    if (expected.size() != std::size_t(actual.size()))
        return;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (isSame(actual.at(int(i)), expected[i]))
            continue;
        m_text << "entry " << i << " of the ";
        checkRecord(what, expected[i], actual.at(int(i)));
        return;
    }
}

void Differences::checkRequest(int index, const Request& expected, const Protocol& actual)
{
    if (!isSame(actual, expected))
        m_text << "request " << index << ":\n  model  " << textOf(toQt(expected)) << "\n  driver "
               << textOf(actual) << '\n';
}

} // namespace plc::model
