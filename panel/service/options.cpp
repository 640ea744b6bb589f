#include "panel/service/options.h"

#include "configuration/listen_address.h"
#include "options/command_line.h"
#include "options/help_text.h"
#include "options/readers.h"
#include "panel/access/audit_reading.h"

namespace plc::panel {
namespace {

constexpr char kUsage[] =
    "usage: plc-panel [OPTION...] PROJECT...\n"
    "       plc-panel [OPTION...] --config CONFIG\n"
    "       plc-panel user --users FILE (add NAME ROLE | remove NAME |\n"
    "                 token NAME | revoke NAME | list)\n"
    "       plc-panel audit FILE [--lines N]\n"
    "\n"
    "Shows the values of PLCs in the browser, with their trends, and writes them. Serves a\n"
    "page and an interface for programs. Runs until SIGTERM or Ctrl-C; SIGHUP has it read\n"
    "its files again. \"user\" changes who may log in; its \"token\" makes and prints a token for\n"
    "a program of a user, in place of the one before. \"audit\" tells whether a record of writes\n"
    "and logins was altered, and shows it.\n"
    "\n"
    "Options:\n";

Expected<void> takeArguments(QStringList arguments, Options* options)
{
    const QString command = arguments.value(0);
    if (command == QLatin1String("user") || command == QLatin1String("audit")) {
        arguments.removeFirst();
        options->task = command == QLatin1String("user") ? Options::Users : Options::Audit;
        options->arguments = arguments;
        return {};
    }
    options->projects = arguments;
    return {};
}

Expected<void> checkSource(const Options& options)
{
    if (options.task == Options::Audit && options.arguments.size() != 1)
        return Error{QStringLiteral("audit expects one file; --help tells more")};
    if (options.task == Options::Users && options.users.isEmpty())
        return Error{QStringLiteral("user needs the file of users: --users FILE")};
    if (options.task == Options::Users || options.task == Options::Audit)
        return {};
    if (options.configuration.isEmpty() == options.projects.isEmpty())
        return Error{
            QStringLiteral("expected project files or one configuration; --help tells more")};
    return {};
}

} // namespace

options::Table Options::table()
{
    using namespace options;
    return Table{
               {"--config FILE", "the configuration, in place of projects", text(&configuration),
                kCompleteProject,
                "The configuration file, which names the projects and says what is recorded, who "
                "may log in and so on. What the command line gives counts more."},
               {"--listen ADDRESS:PORT", "where browsers reach the panel (127.0.0.1:8080)",
                text(&listen), kCompleteNothing,
                "Where the panel listens; 127.0.0.1:8080 if not given. Port 0 is any free one. "
                "Addresses that other machines reach need `--certificate`, `--key` and `--users`."},
               {"--socket PATH", "listen on a Unix socket too", text(&socket), kCompleteFile},
               {"--record FILE", "record changes into this file", text(&record), kCompleteFile},
               {"--read-only", "write nothing, whoever asks", flag(&isReadOnly)},
               {"--certificate FILE", "certificate for TLS, with its chain (PEM)",
                text(&certificate), kCompleteFile},
               {"--key FILE", "key of the certificate (PEM)", text(&key), kCompleteFile},
               {"--users FILE", "who may log in", text(&users), kCompleteFile,
                "The file of users, which `plc-panel user` changes. Without one, only this machine "
                "reaches the panel, and whoever does may do everything."},
               {"--audit FILE", "record who wrote what", text(&audit), kCompleteFile},
               {"--lines N", "with the command audit: show its last N lines, too",
                integer(&auditLines, 1, kMostAuditLines)},
               {"--driver FILE", "the driver library (beside the program, or installed)",
                text(&driverFile), kCompleteFile,
                "The driver library; if not given, it is looked for beside the program and where "
                "it is installed."},
               {"--check", "read all files, and tell what is wrong", flag(&m_checksOnly),
                kCompleteNothing,
                "Read the configuration and all projects, tell what is wrong and how many values "
                "are recorded, and end without connecting anything."},
           } +
           informationOptions(&m_wantsHelp, &m_wantsVersion);
}

Expected<Options> readOptions(const QStringList& words)
{
    Options options;
    const options::Table table = options.table();
    const Expected<options::CommandLine> line = options::CommandLine::parse(words, table);
    if (!line)
        return line.error();
    options.information = options::informationText(*line, QStringLiteral("plc-panel"),
                                                   QString::fromLatin1(kUsage), table);
    if (!options.information.isEmpty())
        return options;
    if (const Expected<void> isGood = line->read(table); !isGood)
        return isGood.error();
    if (const Expected<void> isGood = takeArguments(line->arguments(), &options); !isGood)
        return isGood.error();
    if (options.m_checksOnly)
        options.task = Options::Check;
    if (const Expected<void> isGood = checkSource(options); !isGood)
        return isGood.error();
    return options;
}

Expected<PanelSettings> settingsOf(const Options& options)
{
    PanelSettings settings;
    if (!options.configuration.isEmpty()) {
        Expected<PanelSettings> loaded = loadSettings(options.configuration);
        if (!loaded)
            return loaded.error();
        settings = *loaded;
    } else {
        const Expected<QVector<PlcSettings>> plcs = plcsOfProjects(options.projects);
        if (!plcs)
            return plcs.error();
        settings.plcs = *plcs;
    }
    if (!options.listen.isEmpty()) {
        const auto listen = configuration::parseListenAddress(options.listen);
        if (!listen)
            return Error{QStringLiteral("--listen expects an address with a port, such as "
                                        "127.0.0.1:8080, not \"%1\"")
                             .arg(options.listen)};
        settings.address = listen->address;
        settings.port = listen->port;
    }
    const auto prefer = [](const QString& given, QString* target) {
        if (!given.isEmpty())
            *target = given;
    };
    prefer(options.socket, &settings.socket);
    prefer(options.record, &settings.record.file);
    prefer(options.certificate, &settings.certificate);
    prefer(options.key, &settings.key);
    prefer(options.users, &settings.usersFile);
    prefer(options.audit, &settings.auditFile);
    settings.isReadOnly = settings.isReadOnly || options.isReadOnly;
    if (settings.certificate.isEmpty() != settings.key.isEmpty())
        return Error{QStringLiteral("a certificate and its key are given together or not at all")};
    return settings;
}

} // namespace plc::panel
