#include "host/iec/elementary_types.h"

namespace plc {
namespace iec {
namespace {

/// Types without a code of their own.
struct SameAs {
    const char* name;
    const char* type;
};

const SameAs kSame[] = {{"DATE", "UDINT"},          // seconds since 1970
                        {"DATE_AND_TIME", "UDINT"}, // the same
                        {"DT", "UDINT"},
                        {"TIME_OF_DAY", "TIME"}, // milliseconds since midnight
                        {"TOD", "TIME"},
                        {"LTIME", "ULINT"}, // nanoseconds, like all that follow
                        {"LDATE", "ULINT"},
                        {"LDATE_AND_TIME", "ULINT"},
                        {"LDT", "ULINT"},
                        {"LTIME_OF_DAY", "ULINT"},
                        {"LTOD", "ULINT"}};

} // namespace

const IecType* findElementaryType(const QString& name)
{
    const QString upper = name.toUpper();
    for (const SameAs& same : kSame) {
        if (upper == QLatin1String(same.name))
            return findIecType(QLatin1String(same.type));
    }
    return findIecType(upper);
}

const IecType* pointerType()
{
    return findIecType(QStringLiteral("DWORD"));
}

QStringList elementaryTypeNames()
{
    QStringList names;
    for (const IecType* type = iecTypes(); type->name != nullptr; ++type)
        names.append(QString::fromLatin1(type->name));
    for (const SameAs& same : kSame)
        names.append(QString::fromLatin1(same.name));
    return names;
}

} // namespace iec
} // namespace plc
