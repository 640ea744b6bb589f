#ifndef PLC_PANEL_API_REQUEST_BODIES_H
#define PLC_PANEL_API_REQUEST_BODIES_H

#include "panel/api/subscriptions.h"
#include "panel/api/write_desk.h"

namespace plc::panel {

/// What the bodies of requests say, as far as it makes sense by itself. An error says what does
/// not.

/// {"values": [{"plc": TEXT, "label": TEXT}, …]}
Expected<QVector<ValueName>> readValueNames(const QByteArray& body);

/// {"id": …, "plc": …, "label": …, "value": …, "old": …}; who sends it is not in it.
Expected<WriteRequest> readWrite(const QByteArray& body);

struct RecipeOrder {
    QString plc;
    QStringList labels;
};

/// {"plc": TEXT, "labels": [TEXT, …]}
Expected<RecipeOrder> readRecipeOrder(const QByteArray& body);

struct Login {
    QString user;
    QString password;
};

/// {"user": TEXT, "password": TEXT}
Expected<Login> readLogin(const QByteArray& body);

} // namespace plc::panel

#endif
