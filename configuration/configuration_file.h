#ifndef PLC_CONFIGURATION_CONFIGURATION_FILE_H
#define PLC_CONFIGURATION_CONFIGURATION_FILE_H

#include "project/json_document.h"
#include "project/json_node.h"
#include "streams/input_file.h"

namespace plc::configuration {

constexpr streams::InputFileKind kConfigurationFile = {"a configuration", qint64(16) * 1024 * 1024,
                                                       "a configuration has less"};

/// What `read(root)` makes of a configuration in JSON. `name` stands for it in errors; the first of
/// those that `read` finds is the error.
template <typename Settings>
Expected<Settings> parseConfiguration(const QByteArray& json, const QString& name,
                                      Settings (*read)(const project::JsonNode&))
{
    if (const Expected<void> isGood = streams::checkInputSize(json, name, kConfigurationFile);
        !isGood)
        return isGood.error();
    const Expected<project::JsonDocument> document = project::JsonDocument::parse(json);
    if (!document)
        return Error{QStringLiteral("%1: %2").arg(name, document.error().text)};
    project::DocumentErrors errors(name);
    Settings settings = read(project::JsonNode(document->root(), &errors));
    if (!errors.isEmpty())
        return Error{errors.first()};
    return settings;
}

} // namespace plc::configuration

#endif
