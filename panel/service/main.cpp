#include <malloc.h>

#include <QtCore/QCoreApplication>

#include "panel/service/program.h"
#include "streams/output_stream.h"

namespace {

constexpr int kArenas = 2;

/// glibc would give each thread memory of its own, which keeps the most that the thread ever
/// needed.
void shareMemory()
{
#ifdef M_ARENA_MAX
    ::mallopt(M_ARENA_MAX, kArenas);
#endif
}

} // namespace

int main(int argc, char** argv)
{
    shareMemory();
    plc::streams::secureStandardStreams();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("plc-panel"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PLC_VERSION));
    return plc::panel::runProgram(application.arguments());
}
