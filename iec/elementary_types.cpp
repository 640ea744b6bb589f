#include "iec/elementary_types.h"

namespace plc::iec {
namespace {

/// Types without a code of their own.
struct SameAs {
    const char* name;
    const char* type;
};

constexpr SameAs kSame[] = {{"DATE", "UDINT"},          // seconds since 1970
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

const values::IecType* findElementaryType(const QString& name)
{
    const QString upper = name.toUpper();
    for (const SameAs& same : kSame) {
        if (upper == QLatin1String(same.name))
            return values::findIecType(QLatin1String(same.type));
    }
    return values::findIecType(upper);
}

const values::IecType* pointerType()
{
    return values::findIecType(QStringLiteral("DWORD"));
}

QStringList elementaryTypeNames()
{
    QStringList names;
    for (const values::IecType* type = values::iecTypes(); type->name; ++type)
        names.append(QString::fromLatin1(type->name));
    for (const SameAs& same : kSame)
        names.append(QString::fromLatin1(same.name));
    return names;
}

} // namespace plc::iec
