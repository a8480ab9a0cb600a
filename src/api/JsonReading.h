#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

// How every answer of the service is read. Pure functions; a member of an unexpected type reads as empty or
// 0.

/// A string as it is; a whole number that fits 32 bits in decimal; any other number as "0"; anything else
/// empty.
QString jsonString(const QJsonObject &object, const QString &key);

/// A whole number that fits 32 bits, or a text that is one in base 10; 0 otherwise.
int jsonInt(const QJsonObject &object, const QString &key);

/// The first listed member that is an array, or an empty array.
QJsonArray firstArray(const QJsonObject &object, const QStringList &keys);

/// The object that `body` is, or nothing when it is anything but one JSON object.
std::optional<QJsonObject> jsonObjectFromBody(const QByteArray &body);

/// The object from the first brace of `text` on: the worker may print lines ahead of its JSON. Empty when
/// that is anything but one JSON object.
QJsonObject jsonObjectInText(const QString &text);
