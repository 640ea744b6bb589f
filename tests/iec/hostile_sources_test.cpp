// Whatever stands in a file, the import comes to an end with errors that can be read.

#include "tests/iec/iec_fixture.h"

#include "project/project_document.h"
#include "tests/support/random.h"

namespace plc::iec {
namespace test {

using plc::test::Random;
namespace {

using plc::test::Random;
using testing::HasSubstr;

constexpr int kManySigns = 32 * 1024;

constexpr char kGoodSource[] = R"(
(* Tank farm *)
TYPE Mode : (off, manual := 5, automatic); END_TYPE
TYPE Valve : STRUCT open : BOOL; position : REAL := 5.0; (* Position [%] *) END_STRUCT END_TYPE
TYPE Tank : STRUCT
  name : STRING(19) := 'a$'b';
  inlet, outlet : Valve;
  mode : Mode;
  points : ARRAY[1..n, -1..1] OF INT;
END_STRUCT; END_TYPE
VAR_GLOBAL CONSTANT n : INT := 2 * (3 + 1) MOD 5; END_VAR
VAR_GLOBAL RETAIN tank AT %MB1.0 : ARRAY[1..2] OF Tank; {attribute 'x'} END_VAR
PROGRAM Main
VAR run AT %MX0.3 : BOOL; // Runs
  speed AT %MW0.10 : INT (0..100) := 5; unused : TON; END_VAR
  run := speed > 5;
END_PROGRAM
)";

/// What is imported without an error must be a project that is read back.
void check(const QString& source)
{
    const QVector<SourceFile> files{{QStringLiteral("x.st"), source}};
    Diagnostics diagnostics;
    const ImportResult result = importDeclarations(files, {}, &diagnostics);
    for (const Diagnostic& each : diagnostics.list()) {
        EXPECT_GE(each.position.line, 1);
        EXPECT_LE(each.position.line, int(source.count(QLatin1Char('\n'))) + 1);
        EXPECT_EQ(2, diagnosticText(files, each).count(QLatin1Char('\n')));
    }
    EXPECT_LE(diagnostics.errorCount(), Diagnostics::kMostErrors);
    if (diagnostics.errorCount() > 0)
        return;
    const QByteArray json =
        project::documentText(project::projectDocument(QStringLiteral("x"), result.project));
    const auto project = project::parseProject(json, QStringLiteral("x.json"));
    EXPECT_TRUE(project) << project.error().text.toStdString() << "\n"
                         << json.constData() << "\n"
                         << source.toStdString();
}

TEST(HostileSources, AMegabyteOfParenthesesIsOneError)
{
    EXPECT_EQ(1, importText(QStringLiteral("(").repeated(1024 * 1024)).errors);
}

TEST(HostileSources, ManyOfOneSignAreRefused)
{
    for (const char* sign : {"(", ")", "[", "(*", "*)", "{", "'", "\"", ";", ":", "%", "$", "#",
                             "1", "A", "\n", " ", "..", "//"}) {
        for (const char* before :
             {"", "VAR_GLOBAL ", "VAR_GLOBAL a AT %MB0 : ", "VAR_GLOBAL a AT %MB0 : ARRAY[",
              "TYPE T : ", "PROGRAM P ", "VAR_GLOBAL CONSTANT n : INT := "}) {
            const QString source =
                QLatin1String(before) + QString::fromLatin1(sign).repeated(kManySigns);
            check(source);
        }
    }
}

TEST(HostileSources, ManyOfOneWordAreRefused)
{
    for (const char* word : {"STRUCT ", "ARRAY[1..2] OF ", "TYPE ", "VAR_GLOBAL ", "POINTER TO ",
                             "a : STRUCT ", "PROGRAM ", "END_VAR ", "FUNCTION ", "T#", "(a, "}) {
        for (const char* before : {"", "VAR_GLOBAL a AT %MB0 : ", "TYPE T : "})
            check(QString::fromLatin1(before) + QString::fromLatin1(word).repeated(5000));
    }
}

TEST(HostileSources, DeepTypesAreRefusedOnce)
{
    const Imported imported = importText(QStringLiteral("VAR_GLOBAL a AT %MB0 : ") +
                                         QStringLiteral("ARRAY[1..2] OF ").repeated(100000) +
                                         QStringLiteral("INT; END_VAR"));
    ASSERT_EQ(1, imported.errors) << imported.text();
    EXPECT_THAT(imported.notes[0], HasSubstr("found types nested more than 32 deep"));
}

TEST(HostileSources, LongChainsOfTypesAreRefused)
{
    QString types = QStringLiteral("TYPE T0 : INT; ");
    for (int i = 1; i < 20000; ++i)
        types += QStringLiteral("T%1 : T%2; ").arg(i).arg(i - 1);
    const Imported imported =
        importText(types + QStringLiteral("END_TYPE VAR_GLOBAL a AT %MB0 : T19999; END_VAR"));
    ASSERT_EQ(1, imported.errors);
    EXPECT_THAT(imported.notes[0], HasSubstr("found types made of each other in more than 30"));
}

TEST(HostileSources, HugeArraysTakeNoMemory)
{
    const Imported imported = importText(QStringLiteral(
        "TYPE Row : ARRAY[1..2000] OF LREAL; Big : STRUCT a : ARRAY[1..2000] OF Row; "
        "b : ARRAY[1..2000] OF Row; END_STRUCT Bigger : ARRAY[1..1000] OF Big; END_TYPE "
        "VAR_GLOBAL a AT %MB0 : Big; b AT %MB100000000 : Bigger; "
        "c AT %MB0 : ARRAY[0..1099511627775] OF INT; END_VAR"));
    EXPECT_EQ(2, imported.errors) << imported.text();
    EXPECT_EQ("Big 0:0", imported.place("a"));
}

TEST(HostileSources, CutAnywhereTheyComeToAnEnd)
{
    const QString source = QString::fromUtf8(kGoodSource);
    check(source);
    for (int size = 0; size <= int(source.size()); ++size)
        check(source.left(size));
}

TEST(HostileSources, WithSlipsOfTheHandTheyComeToAnEnd)
{
    const QString source = QString::fromUtf8(kGoodSource);
    const QStringList pieces{
        QStringLiteral("("),          QStringLiteral("(*"),      QStringLiteral("'"),
        QStringLiteral("END_STRUCT"), QStringLiteral("STRUCT"),  QStringLiteral(";"),
        QStringLiteral("9999999999"), QStringLiteral("-"),       QStringLiteral("Tank"),
        QStringLiteral("AT %MW"),     QStringLiteral("END_VAR"), QStringLiteral("TYPE"),
        QStringLiteral(".."),         QStringLiteral("\n"),      QString(QChar(0))};
    Random random(20261121);
    for (int run = 0; run < 3000; ++run) {
        QString changed = source;
        for (int slips = random.between(1, 4); slips > 0; --slips) {
            const int at = random.below(int(changed.size()));
            const int cut = random.oneIn(2) ? random.below(8) : 0;
            const QString piece =
                random.oneIn(3) ? QString() : pieces[random.below(int(pieces.size()))];
            changed.replace(at, cut, QLatin1Char(' ') + piece + QLatin1Char(' '));
        }
        check(changed);
    }
}

} // namespace
} // namespace test
} // namespace plc::iec
