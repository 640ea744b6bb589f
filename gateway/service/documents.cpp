// Writes what the manual and the shell's completion have of the options; runs while the program is
// built.

#include "gateway/service/options.h"
#include "options/document.h"

int main(int argc, char** argv)
{
    return plc::options::writeDocumentsOf(argc, argv, plc::gateway::Options().table(),
                                          {QStringLiteral("status"), QStringLiteral("split")});
}
