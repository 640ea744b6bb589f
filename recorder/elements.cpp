#include "recorder/elements.h"

#include <charconv>
#include <type_traits>

namespace plc::recorder {

QVector<values::Value> knownElements(const SeriesDescription& series, const Sample& sample)
{
    if (sample.quality != Quality::Good)
        return {};
    if (series.type)
        return seriesValues(series, sample.bytes);
    if (const std::optional<double> number = SeriesNumbers(series).number(sample.bytes))
        return {*number};
    return seriesValues(series, sample.bytes);
}

QHash<int, SeriesDescription> seriesById(const QVector<Series>& series)
{
    QHash<int, SeriesDescription> byId;
    for (const Series& one : series)
        byId.insert(one.id, one.description);
    return byId;
}

QByteArray qualityWord(Quality quality)
{
    static const char* const kWords[] = {"good", "stale", "bad", "gap"};
    return kWords[int(quality)];
}

QByteArray numberText(double number)
{
    if (number != number)
        return "nan";
    char buffer[64];
    const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof(buffer), number);
    return QByteArray(buffer, int(result.ptr - buffer));
}

std::optional<double> doubleOf(const values::Value& value)
{
    return std::visit(
        [](const auto& held) -> std::optional<double> {
            if constexpr (std::is_same_v<std::decay_t<decltype(held)>, QString>)
                return {};
            else
                return double(held);
        },
        value);
}

} // namespace plc::recorder
