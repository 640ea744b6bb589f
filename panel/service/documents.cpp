// Writes what the manual and the shell's completion have of the options; runs while the program is
// built.

#include "options/completion_text.h"
#include "options/document.h"
#include "options/manual_text.h"
#include "panel/service/options.h"

int main(int argc, char** argv)
{
    using namespace plc::options;
    plc::panel::Options options;
    const Table all = options.table();
    const QStringList commands = {QStringLiteral("user"), QStringLiteral("audit")};
    const QString names = QStringLiteral("    local options='%1'\n").arg(completionNames(all));
    return writeDocument(
        argc, argv,
        {{QStringLiteral("manual"), {{QStringLiteral("OPTIONS"), manualList(all, commands)}}},
         {QStringLiteral("completion"),
          {{QStringLiteral("VALUES"), completionCases(all, 8)},
           {QStringLiteral("OPTIONS"), names}}}});
}
