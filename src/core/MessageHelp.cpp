#include "core/MessageHelp.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

// A message with placeholders as a pattern. Other words in capitals are part of it: KVT, say.
QRegularExpression patternOf(const QString &message)
{
    static const QRegularExpression placeholder(
        u"\\b[NMK]\\b|(?:\\b|(?<=0x))(?:NAME|NUMBER|OFFSET|FIRST|LAST|FOLDER|FILE|TEXT|TYPE|VERSION|REASON|STATUS)\\b"_s);
    QString pattern;
    qsizetype done = 0;
    auto found = placeholder.globalMatch(message);
    while (found.hasNext()) {
        const QRegularExpressionMatch match = found.next();
        pattern += QRegularExpression::escape(message.sliced(done, match.capturedStart() - done)) + u".+"_s;
        done = match.capturedEnd();
    }
    pattern += QRegularExpression::escape(message.sliced(done));
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern),
                              QRegularExpression::DotMatchesEverythingOption);
}

QString plainText(QString cell)
{
    static const QRegularExpression link(u"\\[([^\\]]*)\\]\\([^)]*\\)"_s);
    static const QRegularExpression marks(u"`|\\*\\*"_s);
    return cell.replace(link, u"\\1"_s).remove(marks).trimmed();
}

} // namespace

MessageHelp::MessageHelp(const QString &chapter)
{
    static const QRegularExpression quoted(u"`([^`]+)`"_s);

    const QStringList lines = chapter.split('\n'_L1);
    for (const QString &line : lines) {
        // What stands before the first bar and after the last is empty.
        const QStringList cells = line.split('|'_L1);
        if (cells.size() != 5)
            continue;
        const QString text = (plainText(cells[2]) + ' '_L1 + plainText(cells[3])).trimmed();
        auto messages = quoted.globalMatch(cells[1]);
        while (messages.hasNext())
            m_entries.append({patternOf(messages.next().captured(1)), text});
    }
}

QString MessageHelp::explain(const QString &message) const
{
    for (const Entry &entry : m_entries) {
        if (entry.message.match(message).hasMatch())
            return entry.text;
    }
    return {};
}
