#pragma once
// A message that travels as two frames: a text header naming it and carrying its params, then
// the payload as one binary frame.

#include <QByteArray>
#include <QJsonObject>
#include <QString>

struct BinaryMessage {
    QString name;
    QJsonObject params;
    QByteArray payload;
};
