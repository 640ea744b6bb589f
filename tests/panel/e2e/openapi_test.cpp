#include <QtCore/QFile>

#include "panel/e2e/panel_site.h"

namespace plc::test {
namespace {

/// A parameter that has to be given, with something that makes sense.
struct Needed {
    QString name;
    QByteArray item;
};

/// What docs/openapi.json tells of an operation, and the panel that answers it.
class DescribedAnswers : public PanelSite {
protected:
    static QJsonObject paths()
    {
        QFile file(QStringLiteral(PLC_SOURCE_DIR "/docs/openapi.json"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QJsonDocument::fromJson(file.readAll()).object()[QStringLiteral("paths")].toObject();
    }
    static std::vector<Needed> neededOf(const QJsonObject& operation)
    {
        const QMap<QString, QByteArray> examples = {{QStringLiteral("plc"), "tank"},
                                                    {QStringLiteral("label"), "T.level"},
                                                    {QStringLiteral("from"), "1"},
                                                    {QStringLiteral("to"), "2"}};
        std::vector<Needed> needed;
        const QJsonArray parameters = operation[QStringLiteral("parameters")].toArray();
        for (const QJsonValue each : parameters) {
            const QJsonObject parameter = each.toObject();
            const QString name = parameter[QStringLiteral("name")].toString();
            if (parameter[QStringLiteral("in")].toString() != QLatin1String("query") ||
                !parameter[QStringLiteral("required")].toBool())
                continue;
            EXPECT_TRUE(examples.contains(name)) << name.toStdString();
            needed.push_back({name, name.toLatin1() + '=' + examples.value(name)});
        }
        return needed;
    }
    /// The parameters but one.
    static QByteArray query(const std::vector<Needed>& needed, const QString& without = {})
    {
        QByteArray text;
        for (const Needed& each : needed) {
            if (each.name != without)
                text += (text.isEmpty() ? "?" : "&") + each.item;
        }
        return text;
    }
    /// The status, which has to be among those that are told. `heads` replaces what a client sends
    /// that does as it is told.
    int ask(const QByteArray& method, const QByteArray& path, const QJsonObject& operation,
            const QByteArray& parameters, QByteArray heads = {})
    {
        QByteArray target = path;
        for (const char* name : {"{id}", "{name}"})
            target.replace(name, "x");
        if (heads.isEmpty())
            heads = "Host: localhost\r\n";
        QByteArray body;
        if (method == "POST" || method == "PUT" || heads.contains("Content-Type"))
            body = "{}";
        if (!body.isEmpty() && !heads.contains("Content-Type"))
            heads += "Content-Type: application/json\r\n";
        if (!body.isEmpty() && !heads.contains("Content-Length"))
            heads += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
        const QByteArray line = method + ' ' + target + parameters + " HTTP/1.1\r\n";
        HttpConnection connection(port);
        connection.send(line + heads + "\r\n" + body);
        connection.waitFor("\r\n\r\n");
        const QByteArray status = connection.received().mid(9, 3);
        EXPECT_TRUE(
            operation[QStringLiteral("responses")].toObject().contains(QString::fromLatin1(status)))
            << line.toStdString() << heads.toStdString() << status.toStdString();
        return status.toInt();
    }
};

TEST_F(DescribedAnswers, HaveAStatusThatIsToldAnd400WithoutAParameterThatIsNeeded)
{
    start();
    int needed = 0;
    const QJsonObject all = paths();
    for (auto path = all.begin(); path != all.end(); ++path) {
        const QJsonObject operations = path.value().toObject();
        for (auto each = operations.begin(); each != operations.end(); ++each) {
            const QByteArray method = each.key().toUpper().toLatin1();
            const QJsonObject operation = each.value().toObject();
            const std::vector<Needed> parameters = neededOf(operation);
            const int status = ask(method, path.key().toLatin1(), operation, query(parameters));
            if (!parameters.empty()) {
                EXPECT_EQ(200, status) << path.key().toStdString();
            }
            for (const Needed& missing : parameters) {
                ++needed;
                EXPECT_EQ(400, ask(method, path.key().toLatin1(), operation,
                                   query(parameters, missing.name)))
                    << path.key().toStdString() << " without " << missing.name.toStdString();
            }
        }
    }
    EXPECT_EQ(9, needed) << "label of values; plc, label, from and to of both histories";
}

TEST_F(DescribedAnswers, TellWhatIsRefusedBeforeAnybodyLooksAtIt)
{
    start();
    const QByteArray host = "Host: localhost\r\n";
    // One byte more than any operation takes.
    const QByteArray tooLong = "Content-Length: 2097153\r\n";
    const QJsonObject all = paths();
    for (auto path = all.begin(); path != all.end(); ++path) {
        const QJsonObject operations = path.value().toObject();
        for (auto each = operations.begin(); each != operations.end(); ++each) {
            const QByteArray method = each.key().toUpper().toLatin1();
            const QJsonObject operation = each.value().toObject();
            const auto refused = [&](const QByteArray& heads) {
                return ask(method, path.key().toLatin1(), operation, {}, heads);
            };
            const std::string what = method.toStdString() + ' ' + path.key().toStdString();
            EXPECT_EQ(421, refused("Host: elsewhere.example\r\n")) << what;
            const bool isPublic =
                operation[QStringLiteral("x-role")].toString() == QLatin1String("none");
            EXPECT_EQ(method == "GET" && isPublic ? 200 : 403,
                      refused(host + "Sec-Fetch-Site: cross-site\r\n"))
                << what;
            if (method == "GET")
                continue;
            EXPECT_EQ(415, refused(host + "Content-Type: text/plain\r\n")) << what;
            EXPECT_EQ(413, refused(host + "Content-Type: application/json\r\n" + tooLong)) << what;
        }
    }
}

} // namespace
} // namespace plc::test
