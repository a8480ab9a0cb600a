#pragma once

#include <QList>
#include <QRegularExpression>
#include <QString>

/// The manual's chapter of messages, which says what each means and what to do about it. Re-entrant.
class MessageHelp
{
public:
    /// Takes the tables of a Markdown text: messages in backticks, in which words in capitals such as NAME
    /// stand for anything, a cause, and a remedy.
    explicit MessageHelp(const QString &chapter);

    /// Cause and remedy of the first message that is of that form; empty if none is.
    QString explain(const QString &message) const;

private:
    struct Entry
    {
        QRegularExpression message;
        QString text;
    };

    QList<Entry> m_entries;
};
