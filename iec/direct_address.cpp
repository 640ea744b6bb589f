#include "iec/direct_address.h"

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include "project/memory_layout.h"
#include "project/project.h"

namespace plc::iec {
namespace {

constexpr qint64 kHighestByte = 0x7fffffff;

/// What one step of the last number moves by.
struct Size {
    char letter;
    int bytes;
};
constexpr Size kSizes[] = {{'B', 1}, {'W', 2}, {'D', 4}, {'L', 8}};

int bytesOf(QChar letter)
{
    for (const Size& size : kSizes) {
        if (letter == QLatin1Char(size.letter))
            return size.bytes;
    }
    return 0;
}

/// Numbers with dots between them.
std::optional<QVector<qint64>> numbersOf(const QString& text)
{
    QVector<qint64> numbers;
    for (const QString& part : text.split(QLatin1Char('.'))) {
        bool ok = false;
        const qint64 number = part.toLongLong(&ok, 10);
        if (!ok || !part[0].isDigit())
            return {};
        numbers.append(number);
    }
    return numbers;
}

std::optional<DirectAddress> bitAddress(const QVector<qint64>& numbers, QString* expected)
{
    *expected = QStringLiteral("%MX<byte>.<bit> or %MX<area>.<byte>.<bit>, the bit from 0 to 7");
    const int count = int(numbers.size());
    if (count < 2 || count > 3 || numbers.last() >= project::kBitsPerByte)
        return {};
    DirectAddress address;
    address.byte = numbers[count - 2];
    address.bit = int(numbers.last());
    if (count == 3)
        address.area = int(qMin(numbers[0], qint64(project::kHighestAreaIndex) + 1));
    return address;
}

std::optional<DirectAddress> byteAddress(const QVector<qint64>& numbers, int bytes,
                                         QString* expected)
{
    *expected = QStringLiteral("an address of one number or of two, as in %MW100 or %MW1.100");
    if (numbers.size() > 2 || numbers.last() > kHighestByte)
        return {};
    DirectAddress address;
    address.byte = numbers.last() * bytes;
    if (numbers.size() == 2)
        address.area = int(qMin(numbers[0], qint64(project::kHighestAreaIndex) + 1));
    return address;
}

} // namespace

std::optional<DirectAddress> parseDirectAddress(const QString& text, QString* expected)
{
    const QString upper = text.toUpper();
    const QChar place = upper.size() > 1 ? upper[1] : QChar();
    DirectAddress elsewhere;
    if (upper.endsWith(QLatin1Char('*'))) {
        elsewhere.place = DirectAddress::Open;
        return elsewhere;
    }
    if (place == QLatin1Char('I') || place == QLatin1Char('Q')) {
        elsewhere.place = DirectAddress::Process;
        return elsewhere;
    }
    *expected = QStringLiteral("an address such as %MB100, %MW1.100 or %MX12.3");
    if (place != QLatin1Char('M') || upper.size() < 3)
        return {};
    const QChar letter = upper[2];
    const std::optional<QVector<qint64>> numbers = numbersOf(upper.mid(letter.isDigit() ? 2 : 3));
    const int bytes = bytesOf(letter);
    if (!numbers || (bytes == 0 && letter != QLatin1Char('X') && !letter.isDigit()))
        return {};
    const std::optional<DirectAddress> address =
        bytes == 0 ? bitAddress(*numbers, expected) : byteAddress(*numbers, bytes, expected);
    if (!address)
        return {};
    if (address->area && *address->area > project::kHighestAreaIndex) {
        *expected = QStringLiteral("an area from 0 to %1").arg(project::kHighestAreaIndex);
        return {};
    }
    if (address->byte > kHighestByte) {
        *expected = QStringLiteral("a byte address of at most %1").arg(kHighestByte);
        return {};
    }
    return address;
}

qint64 bitOffset(qint64 byte, int bit)
{
    const bool isHighByte = byte % 2 == 0;
    return isHighByte ? project::kBitsPerWord * byte + project::kBitsPerByte + bit
                      : project::kBitsPerWord * (byte - 1) + bit;
}

} // namespace plc::iec
