#include "gateway/faults/clock_shift.h"

namespace plc::faults {

ClockShift::ClockShift()
{
    if (!m_file.open())
        qFatal("there is no room for a temporary file");
    set(0);
}

QProcessEnvironment ClockShift::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(PLC_SHIFTED_CLOCK));
    environment.insert(QStringLiteral("PLC_CLOCK_SHIFT"), m_file.fileName());
    // AddressSanitizer wants to be loaded first, and need not be.
    const QString sanitizer = environment.value(QStringLiteral("ASAN_OPTIONS"));
    environment.insert(QStringLiteral("ASAN_OPTIONS"),
                       sanitizer + QStringLiteral(":verify_asan_link_order=0"));
    return environment;
}

void ClockShift::set(qint64 ahead)
{
    m_file.seek(0);
    m_file.write(reinterpret_cast<const char*>(&ahead), sizeof(ahead));
    m_file.flush();
}

} // namespace plc::faults
