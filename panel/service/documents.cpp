// Writes what the manual and the shell's completion have of the options; runs while the program is
// built.

#include "options/document.h"
#include "panel/service/options.h"

int main(int argc, char** argv)
{
    return plc::options::writeDocumentsOf(argc, argv, plc::panel::Options().table(),
                                          {QStringLiteral("user"), QStringLiteral("audit")});
}
