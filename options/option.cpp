#include "options/option.h"

namespace plc::options {
namespace {

QString longPart(const char* usage)
{
    const QString text = QString::fromLatin1(usage);
    return text.mid(text.indexOf(QLatin1String("--")) + 2);
}

} // namespace

QString Option::name() const
{
    return longPart(usage).section(QLatin1Char(' '), 0, 0);
}

QString Option::letter() const
{
    const QString text = QString::fromLatin1(usage);
    return text.startsWith(QLatin1String("--")) ? QString() : text.mid(1, 1);
}

QString Option::placeholder() const
{
    return longPart(usage).section(QLatin1Char(' '), 1);
}

const Option* findOption(const Table& table, const QString& name)
{
    for (const Option& option : table) {
        if (option.name() == name)
            return &option;
    }
    return nullptr;
}

void addNew(const Table& further, Table* table)
{
    for (const Option& option : further) {
        if (!findOption(*table, option.name()))
            table->append(option);
    }
}

} // namespace plc::options
