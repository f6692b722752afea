#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <ostream>

// Readable failure messages for the Qt values the suites compare.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QStringList& list, std::ostream* os) {
    *os << '[' << list.join(QStringLiteral("\", \"")).toStdString() << ']';
}
inline void PrintTo(const QJsonArray& array, std::ostream* os) {
    *os << QJsonDocument(array).toJson(QJsonDocument::Compact).toStdString();
}
inline void PrintTo(const QJsonObject& object, std::ostream* os) {
    *os << QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}
