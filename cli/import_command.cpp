#include "cli/import_command.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>

#include "cli/command_context.h"
#include "cli/console.h"
#include "cli/progress.h"
#include "iec/file_format.h"
#include "options/readers.h"
#include "project/label_syntax.h"
#include "project/project_document.h"
#include "streams/file_replacement.h"
#include "streams/input_file.h"
#include "values/nearest_name.h"

namespace plc::cli {
namespace {

constexpr streams::InputFileKind kSource = {"a file", qint64(32) * 1024 * 1024, "import its parts"};
constexpr int kHighestAlignment = 8;

Expected<QVector<iec::SourceFile>> readSources(const QStringList& paths)
{
    QVector<iec::SourceFile> sources;
    for (const QString& path : paths) {
        const Expected<QByteArray> bytes = streams::readInputFile(path, kSource);
        if (!bytes)
            return bytes.error();
        const QString foreign = iec::foreignFormat(*bytes);
        if (!foreign.isEmpty())
            return Error{QStringLiteral("%1: is %2").arg(path, foreign)};
        sources.append({path, iec::decodeSource(*bytes)});
    }
    return sources;
}

iec::ImportResult importSources(const QVector<iec::SourceFile>& sources,
                                const iec::ImportOptions& options, iec::Diagnostics* diagnostics)
{
    qint64 characters = 0;
    for (const iec::SourceFile& source : sources)
        characters += source.text.size();
    QElapsedTimer clock;
    clock.start();
    Progress progress(QStringLiteral("importing"), QStringLiteral("characters"), characters, 0);
    return iec::importDeclarations(sources, options, diagnostics,
                                   [&](qint64 done) { progress.advance(done, clock.elapsed()); });
}

/// The project that the symbols belong into, or a new one.
Expected<QJsonObject> documentFor(const ImportOptions& options, const project::Project& symbols)
{
    const QString merged = options.merged;
    if (merged.isEmpty()) {
        const QString name = options.name.isEmpty()
                                 ? QFileInfo(options.arguments.first()).completeBaseName()
                                 : options.name;
        return project::projectDocument(name.isEmpty() ? QStringLiteral("Imported") : name,
                                        symbols);
    }
    const Expected<QByteArray> json = streams::readInputFile(merged, kSource);
    if (!json)
        return json.error();
    if (const Expected<project::Project> old = project::parseProject(*json, merged); !old)
        return old.error();
    QJsonObject document = QJsonDocument::fromJson(*json).object();
    project::mergeSymbols(symbols, &document);
    return document;
}

/// Returns the exit code, after complaining if it is not kExitDone.
ExitCode write(const QByteArray& text, const QString& path)
{
    if (path.isEmpty())
        return printBytes(text) ? kExitDone : kExitRefused;
    // Whole or not at all: it may be the project that is merged into.
    streams::FileReplacement file(path);
    if (const Expected<void> opened = file.open(); !opened) {
        complain(opened.error().text);
        return kExitUsage;
    }
    file.write(text);
    const Expected<void> committed = file.commit();
    if (committed)
        return kExitDone;
    complain(committed.error().text);
    return kExitRefused;
}

QString counted(int number, const char* thing)
{
    return QStringLiteral("%1 %2%3").arg(number).arg(QLatin1String(thing),
                                                     number == 1 ? QString() : QStringLiteral("s"));
}

int importSymbols(const ImportOptions& options)
{
    const Expected<QVector<iec::SourceFile>> sources = readSources(options.arguments);
    if (!sources)
        return usageError(sources.error());
    iec::Diagnostics diagnostics;
    const iec::ImportResult result = importSources(*sources, options.places, &diagnostics);
    for (const QString& text : iec::diagnosticTexts(*sources, diagnostics, options.allWarnings))
        printErrorText(text);
    if (diagnostics.errorCount() > 0)
        return usageError({QStringLiteral("%1; nothing was written")
                               .arg(counted(diagnostics.errorCount(), "error"))});
    if (result.variables == 0)
        return usageError(
            {QStringLiteral("no variable has an address, %1 left out; nothing was written")
                 .arg(result.leftOut)});
    const Expected<QJsonObject> document = documentFor(options, result.project);
    if (!document)
        return usageError(document.error());
    const QByteArray text = project::documentText(*document);
    const QString name =
        options.output.isEmpty() ? QStringLiteral("the imported project") : options.output;
    if (const Expected<project::Project> read = project::parseProject(text, name); !read)
        return usageError(read.error());
    const ExitCode written = write(text, options.output);
    if (written != kExitDone)
        return written;
    complain(QStringLiteral("%1 imported, %2 left out")
                 .arg(counted(result.variables, "variable"))
                 .arg(result.leftOut));
    return kExitDone;
}

/// AREA:OFFSET
options::Reader place(std::optional<iec::MemoryPlace>* target)
{
    return [target](const options::Given& given) -> Expected<void> {
        const QStringList parts = given.text().split(QLatin1Char(':'));
        bool areaIsGood = false;
        bool offsetIsGood = false;
        iec::MemoryPlace base;
        base.area = parts.first().toInt(&areaIsGood, 10);
        base.offset = parts.last().toInt(&offsetIsGood, 10);
        if (!areaIsGood || !offsetIsGood || parts.size() != 2 || base.area < 0 ||
            base.area > project::kHighestAreaIndex || base.offset < 0) {
            return Error{QStringLiteral("--%1 takes AREA:OFFSET such as 1:2000, not %2")
                             .arg(given.name, values::quoted(given.text()))};
        }
        *target = base;
        return {};
    };
}

} // namespace

const Command kImportCommand = {
    "import",
    {"FILE...", 1, kAnyNumber, "at least one file", options::kCompleteFile},
    "make a project of declarations in structured text (IEC 61131-3)",
    {},
    makeOptions<ImportOptions>,
    execute<ImportOptions, importSymbols>};

options::Table ImportOptions::table()
{
    using namespace options;
    return Table{
               {"-o, --output FILE",
                "write the project to this file instead of the standard output", text(&output),
                kCompleteFile,
                "Write the project to this file instead of the standard output. A file that exists "
                "is replaced, whole or not at all, because it is made anew whenever the "
                "declarations change; what was added by hand is kept with `--merge`."},
               {"--merge FILE", "put the symbols into this project and keep everything else in it",
                text(&merged), kCompleteProject},
               {"--name NAME", "name of a new project; if not given, that of the first file",
                text(&name), kCompleteNothing,
                "Name of a new project; that of the first file if not given."},
               {"--area N", "memory area of addresses such as %MW10, which name none (0)",
                integer(&places.defaultArea, 0, project::kHighestAreaIndex), kCompleteNothing,
                "Memory area of addresses such as %MW10, which name none; 0 if not given."},
               {"--base AREA:OFFSET",
                "place variables without an address one after another from here on",
                place(&places.base), kCompleteNothing,
                "Place variables without an address one after another from this byte on."},
               {"--align N", "values lie at multiples of their size or of N: 1, 2, 4 or 8 (4)",
                integer(&places.alignment, 1, kHighestAlignment), kCompleteNothing,
                "Values lie at multiples of their size, or of `N` if that is less: 1, 2, 4 or 8; 4 "
                "if not given."},
               {"--scope NAME",
                "scope of the global variables; without one, labels begin with the dot",
                text(&places.globalScope)},
               {"--all-warnings", "name every variable that is left out, not only the first 20",
                flag(&allWarnings), kCompleteNothing,
                "Name every variable that is left out; without this option, the first 20 are named "
                "and the others counted by reason. Warnings that change the meaning, such as "
                "overlays and "
                "layouts, are always shown."},
           } +
           CommandOptions::table();
}

Expected<void> ImportOptions::check()
{
    const int alignment = places.alignment;
    if ((alignment & (alignment - 1)) != 0)
        return Error{QStringLiteral("--align takes 1, 2, 4 or 8, not %1").arg(alignment)};
    if (!merged.isEmpty() && !name.isEmpty())
        return Error{QStringLiteral("--merge keeps the project's name; leave out --name")};
    const QString scope = places.globalScope;
    if (!scope.isEmpty() && !project::isLabelName(scope)) {
        return Error{QStringLiteral("--scope takes a name without . [ ] , = quotes and blanks, "
                                    "not %1")
                         .arg(values::quoted(scope))};
    }
    return {};
}

} // namespace plc::cli
