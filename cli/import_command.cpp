#include "cli/import_command.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>

#include "cli/console.h"
#include "cli/progress.h"
#include "iec/file_format.h"
#include "project/project_document.h"
#include "streams/file_replacement.h"

namespace plc::cli {
namespace {

constexpr qint64 kLargestFile = qint64(32) * 1024 * 1024;
std::optional<QByteArray> readFile(const QString& path, QString* error)
{
    QFile file(path);
    if (QFileInfo(path).isDir()) {
        *error = QStringLiteral("%1: is a folder, expected a file").arg(path);
        return {};
    }
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: cannot be read: %2").arg(path, file.errorString());
        return {};
    }
    QByteArray bytes = file.read(kLargestFile + 1);
    if (bytes.size() > kLargestFile) {
        *error = QStringLiteral("%1: the file has more than %2 MiB; import its parts")
                     .arg(path)
                     .arg(kLargestFile / 1024 / 1024);
        return {};
    }
    return bytes;
}

std::optional<QVector<iec::SourceFile>> readSources(const QStringList& paths, QString* error)
{
    QVector<iec::SourceFile> sources;
    for (const QString& path : paths) {
        const std::optional<QByteArray> bytes = readFile(path, error);
        if (!bytes)
            return {};
        const QString foreign = iec::foreignFormat(*bytes);
        if (!foreign.isEmpty()) {
            *error = QStringLiteral("%1: is %2").arg(path, foreign);
            return {};
        }
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

/// The project that the symbols belong into, or a new one. Returns nothing and sets `error` when it
/// is no good project.
std::optional<QJsonObject> documentFor(const Options& options, const project::Project& symbols,
                                       QString* error)
{
    const QString merged = options.import.merged;
    if (merged.isEmpty()) {
        const QString name = options.import.name.isEmpty()
                                 ? QFileInfo(options.arguments.first()).completeBaseName()
                                 : options.import.name;
        return project::projectDocument(name.isEmpty() ? QStringLiteral("Imported") : name,
                                        symbols);
    }
    const std::optional<QByteArray> json = readFile(merged, error);
    if (!json || !project::parseProject(*json, merged, error))
        return {};
    QJsonObject document = QJsonDocument::fromJson(*json).object();
    project::mergeSymbols(symbols, &document);
    return document;
}

/// Returns the exit code, after complaining if it is not kExitDone.
ExitCode write(const QByteArray& text, const QString& path)
{
    if (path.isEmpty())
        return printBytes(text) ? kExitDone : kExitRefused;
    QString error;
    // Whole or not at all: it may be the project that is merged into.
    streams::FileReplacement file(path);
    if (!file.open(&error)) {
        complain(error);
        return kExitUsage;
    }
    file.write(text);
    if (file.commit(&error))
        return kExitDone;
    complain(error);
    return kExitRefused;
}

QString counted(int number, const char* thing)
{
    return QStringLiteral("%1 %2%3").arg(number).arg(QLatin1String(thing),
                                                     number == 1 ? QString() : QStringLiteral("s"));
}

int failed(const QString& error)
{
    complain(error);
    return kExitUsage;
}

} // namespace

int importSymbols(const Options& options)
{
    QString error;
    const std::optional<QVector<iec::SourceFile>> sources = readSources(options.arguments, &error);
    if (!sources)
        return failed(error);
    iec::Diagnostics diagnostics;
    const iec::ImportResult result = importSources(*sources, options.import.places, &diagnostics);
    for (const QString& text :
         iec::diagnosticTexts(*sources, diagnostics, options.import.allWarnings))
        printErrorText(text);
    if (diagnostics.errorCount() > 0)
        return failed(QStringLiteral("%1; nothing was written")
                          .arg(counted(diagnostics.errorCount(), "error")));
    if (result.variables == 0)
        return failed(QStringLiteral("no variable has an address, %1 left out; nothing was written")
                          .arg(result.leftOut));
    const std::optional<QJsonObject> document = documentFor(options, result.project, &error);
    if (!document)
        return failed(error);
    const QByteArray text = project::documentText(*document);
    const QString name = options.import.output.isEmpty() ? QStringLiteral("the imported project")
                                                         : options.import.output;
    if (!project::parseProject(text, name, &error))
        return failed(error);
    const ExitCode written = write(text, options.import.output);
    if (written != kExitDone)
        return written;
    complain(QStringLiteral("%1 imported, %2 left out")
                 .arg(counted(result.variables, "variable"))
                 .arg(result.leftOut));
    return kExitDone;
}

} // namespace plc::cli
