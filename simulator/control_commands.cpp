#include "simulator/control_commands.h"

#include <optional>

#include "simulator/reply_faults.h"
#include "simulator/value_access.h"
#include "values/nearest_name.h"
#include "values/visible_text.h"

namespace plc::simulator {
namespace {

constexpr int kMostPeekedBytes = 4096;

// An answer is one line, whatever a client has written into the memory.

QString ok(const QString& text = QString())
{
    return text.isEmpty() ? QStringLiteral("ok")
                          : QStringLiteral("ok ") + values::visibleText(text);
}

QString error(const QString& text)
{
    return QStringLiteral("error: ") + values::visibleText(text);
}

QString outsideText(int area, int address, qint64 count)
{
    return QStringLiteral("%1 bytes from address %2 on do not lie within an area %3 of the project")
        .arg(count)
        .arg(address)
        .arg(area);
}

Expected<int> wholeNumber(const QString& text, int minimum, int maximum)
{
    bool converted = false;
    const int number = text.toInt(&converted);
    if (converted && number >= minimum && number <= maximum)
        return number;
    return Error{QStringLiteral("%1 is not a whole number from %2 to %3")
                     .arg(values::quoted(text))
                     .arg(minimum)
                     .arg(maximum)};
}

/// Has `carryOut` take a number that is in its range. Returns the answer.
QString withNumber(const QString& text, int minimum, int maximum,
                   const std::function<void(int)>& carryOut)
{
    const Expected<int> number = wholeNumber(text, minimum, maximum);
    if (!number)
        return error(number.error().text);
    carryOut(*number);
    return ok();
}

/// The same for "on" and "off".
QString withSwitch(const QString& text, const std::function<void(bool)>& carryOut)
{
    if (text != QLatin1String("on") && text != QLatin1String("off"))
        return error(QStringLiteral("%1 is neither \"on\" nor \"off\"").arg(values::quoted(text)));
    carryOut(text == QLatin1String("on"));
    return ok();
}

/// Splits into at most `count` words, the last of which keeps its blanks.
QStringList splitArguments(const QString& text, int count)
{
    QStringList arguments;
    QString rest = text.trimmed();
    while (!rest.isEmpty() && int(arguments.size()) < count - 1) {
        const int end = int(rest.indexOf(QLatin1Char(' ')));
        if (end < 0)
            break;
        arguments.append(rest.left(end));
        rest = rest.mid(end).trimmed();
    }
    if (!rest.isEmpty())
        arguments.append(rest);
    return arguments;
}

std::optional<QByteArray> hexBytes(const QString& text)
{
    const QByteArray digits = text.toLatin1().replace(" ", "");
    QByteArray bytes = QByteArray::fromHex(digits);
    if (bytes.isEmpty() || bytes.toHex() != digits.toLower())
        return {};
    return bytes;
}

} // namespace

const ControlCommands::Command ControlCommands::kCommands[] = {
    {"get LABEL", "the value of a variable", 1, &ControlCommands::get},
    {"set LABEL VALUE", "gives a variable a value", 2, &ControlCommands::set},
    {"peek AREA ADDRESS COUNT", "bytes of an area, in hex", 3, &ControlCommands::peek},
    {"poke AREA ADDRESS HEX", "stores bytes in an area", 3, &ControlCommands::poke},
    {"delay MS", "delays every reply", 1, &ControlCommands::delay},
    {"fragment BYTES", "sends replies in pieces; 0: whole", 1, &ControlCommands::fragment},
    {"join on|off", "sends the replies to joined requests in one piece", 1, &ControlCommands::join},
    {"drop COUNT", "loses the next replies to reads and writes", 1, &ControlCommands::drop},
    {"late N MS", "delays the Nth reply from now", 2, &ControlCommands::late},
    {"half N", "sends half of the Nth reply from now, then nothing", 1, &ControlCommands::half},
    {"duplicate N", "sends the Nth reply from now twice", 1, &ControlCommands::duplicate},
    {"refuse-login on|off", "refuses the login", 1, &ControlCommands::refuseLogin},
    {"fail-writes on|off", "refuses every write", 1, &ControlCommands::failWrites},
    {"disconnect", "breaks all connections", 0, &ControlCommands::disconnectClients},
    {"offline", "breaks all connections and listens no more", 0, &ControlCommands::offline},
    {"online", "listens again", 0, &ControlCommands::online},
    {"status", "clients and requests so far", 0, &ControlCommands::status},
    {"help", "this list", 0, &ControlCommands::help},
    {"stop", "ends the simulator", 0, &ControlCommands::stop},
    {nullptr, nullptr, 0, nullptr}};

ControlCommands::ControlCommands(const project::Project& project, PlcMemory* memory,
                                 PlcServer* server, ConnectionSettings* settings,
                                 std::function<void()> stop)
    : m_finder(project),
      m_memory(memory),
      m_server(server),
      m_settings(settings),
      m_stop(std::move(stop))
{
}

QString ControlCommands::execute(const QString& line)
{
    const QStringList words = splitArguments(line, 2);
    if (words.isEmpty())
        return {};
    QStringList names;
    for (const Command* command = kCommands; command->usage; ++command) {
        const QString usage = QString::fromLatin1(command->usage);
        names.append(usage.section(QLatin1Char(' '), 0, 0));
        if (names.last() != words[0])
            continue;
        const QStringList arguments = splitArguments(words.value(1), qMax(command->arguments, 1));
        if (int(arguments.size()) != command->arguments)
            return error(QStringLiteral("expected: %1").arg(usage));
        return (this->*command->run)(arguments);
    }
    return error(QStringLiteral("unknown command %1%2; \"help\" lists all")
                     .arg(values::quoted(words[0]), values::nearestNameHint(words[0], names)));
}

QString ControlCommands::get(const QStringList& arguments)
{
    const Expected<project::LabelTarget> place = m_finder.find(arguments[0]);
    if (!place)
        return error(place.error().text);
    m_settings->prepareMemory();
    return ok(loadText(*m_memory, *place));
}

QString ControlCommands::set(const QStringList& arguments)
{
    const Expected<project::LabelTarget> place = m_finder.find(arguments[0]);
    if (!place)
        return error(place.error().text);
    m_settings->prepareMemory();
    const Expected<void> isStored = storeText(m_memory, *place, arguments[1]);
    return isStored ? ok() : error(isStored.error().text);
}

QString ControlCommands::peek(const QStringList& arguments)
{
    const Expected<int> area = wholeNumber(arguments[0], 0, project::kHighestAreaIndex);
    const Expected<int> address = wholeNumber(arguments[1], 0, kHighestNumber);
    const Expected<int> count = wholeNumber(arguments[2], 1, kMostPeekedBytes);
    for (const Expected<int>* number : {&count, &address, &area}) {
        if (!*number)
            return error(number->error().text);
    }
    if (!m_memory->contains(*area, quint64(*address), quint64(*count)))
        return error(outsideText(*area, *address, *count));
    m_settings->prepareMemory();
    return ok(QString::fromLatin1(m_memory->read(*area, quint32(*address), *count).toHex(' ')));
}

QString ControlCommands::poke(const QStringList& arguments)
{
    const Expected<int> area = wholeNumber(arguments[0], 0, project::kHighestAreaIndex);
    const Expected<int> address = wholeNumber(arguments[1], 0, kHighestNumber);
    for (const Expected<int>* number : {&address, &area}) {
        if (!*number)
            return error(number->error().text);
    }
    const std::optional<QByteArray> bytes = hexBytes(arguments[2]);
    if (!bytes)
        return error(QStringLiteral("%1 are not hex bytes").arg(values::quoted(arguments[2])));
    if (!m_memory->contains(*area, quint64(*address), quint64(bytes->size())))
        return error(outsideText(*area, *address, bytes->size()));
    m_settings->prepareMemory();
    m_memory->write(*area, quint32(*address), *bytes);
    return ok();
}

QString ControlCommands::delay(const QStringList& arguments)
{
    return withNumber(arguments[0], 0, kLongestDelay,
                      [this](int milliseconds) { m_settings->faults->setDelay(milliseconds); });
}

QString ControlCommands::fragment(const QStringList& arguments)
{
    return withNumber(arguments[0], 0, kHighestNumber,
                      [this](int bytes) { m_settings->fragment = bytes; });
}

QString ControlCommands::join(const QStringList& arguments)
{
    return withSwitch(arguments[0], [this](bool isOn) { m_settings->join = isOn; });
}

QString ControlCommands::drop(const QStringList& arguments)
{
    return withNumber(arguments[0], 0, kHighestNumber,
                      [this](int count) { m_settings->faults->dropNext(count); });
}

QString ControlCommands::late(const QStringList& arguments)
{
    const Expected<int> milliseconds = wholeNumber(arguments[1], 0, kLongestDelay);
    if (!milliseconds)
        return error(milliseconds.error().text);
    return withNumber(arguments[0], 1, kHighestNumber,
                      [&](int number) { m_settings->faults->delayReply(number, *milliseconds); });
}

QString ControlCommands::half(const QStringList& arguments)
{
    return withNumber(arguments[0], 1, kHighestNumber,
                      [this](int number) { m_settings->faults->halveReply(number); });
}

QString ControlCommands::duplicate(const QStringList& arguments)
{
    return withNumber(arguments[0], 1, kHighestNumber,
                      [this](int number) { m_settings->faults->duplicateReply(number); });
}

QString ControlCommands::refuseLogin(const QStringList& arguments)
{
    return withSwitch(arguments[0],
                      [this](bool isOn) { m_settings->services->setLoginRefused(isOn); });
}

QString ControlCommands::failWrites(const QStringList& arguments)
{
    return withSwitch(arguments[0],
                      [this](bool isOn) { m_settings->services->setWritesRefused(isOn); });
}

QString ControlCommands::disconnectClients(const QStringList&)
{
    m_server->disconnectClients();
    return ok();
}

QString ControlCommands::offline(const QStringList&)
{
    m_server->goOffline();
    return ok();
}

QString ControlCommands::online(const QStringList&)
{
    const Expected<void> isOnline = m_server->goOnline();
    return isOnline ? ok() : error(isOnline.error().text);
}

QString ControlCommands::status(const QStringList&)
{
    return ok(QStringLiteral("%1 clients=%2 requests=%3 refused=%4")
                  .arg(m_server->isOnline() ? QStringLiteral("online") : QStringLiteral("offline"))
                  .arg(m_server->clients())
                  .arg(m_settings->requests)
                  .arg(m_settings->refused));
}

QString ControlCommands::help(const QStringList&)
{
    QString text = ok(QStringLiteral("the commands are"));
    for (const Command* command = kCommands; command->usage; ++command) {
        text += QStringLiteral("\n  %1  %2")
                    .arg(QLatin1String(command->usage), -24)
                    .arg(QLatin1String(command->purpose));
    }
    return text;
}

QString ControlCommands::stop(const QStringList&)
{
    m_stop();
    return ok();
}

} // namespace plc::simulator
