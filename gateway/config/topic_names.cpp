#include "gateway/config/topic_names.h"

#include "values/visible_text.h"

namespace plc::gateway {

using project::JsonNode;

namespace {

// A topic has 65535 bytes at most; three names and the label of a value share them.
constexpr int kLongestName = 256;

} // namespace

QString topicNameProblem(const QString& name)
{
    if (name.trimmed().isEmpty())
        return QStringLiteral("expected a name");
    if (name.toUtf8().size() > kLongestName)
        return QStringLiteral("expected a name of at most %1 bytes").arg(kLongestName);
    for (int i = 0; i < int(name.size()); ++i) {
        const QChar character = name[i];
        if (QStringLiteral("+#/").contains(character))
            return QStringLiteral(
                "expected a name without + # /, which separate and replace the "
                "levels of topics");
        if (values::isObeyed(character.unicode()) || values::isLoneSurrogate(name, i))
            return QStringLiteral("expected a name of characters that can be shown");
    }
    return {};
}

QString readTopicName(const JsonNode& node)
{
    QString name = node.text();
    const QString problem = topicNameProblem(name);
    if (!problem.isEmpty())
        node.fail(QStringLiteral("found %1, %2").arg(node.shown(), problem));
    return name;
}

} // namespace plc::gateway
