#pragma once

#include <QSet>
#include <QString>

/// The store's one documented account. Credits and sessions last as long as it does.
class StoreAccount
{
public:
    /// A session's token, another one each time; empty when e-mail or password is wrong.
    QString signIn(const QString &email, const QString &password)
    {
        if (email != QStringLiteral("demo@vox.invalid") || password != QStringLiteral("demo"))
            return {};
        const QString token = QStringLiteral("demo-session-%1").arg(m_tokens.size() + 1);
        m_tokens.insert(token);
        return token;
    }
    bool hasSession(const QString &token) const { return m_tokens.contains(token); }

    int credits() const { return m_credits; }
    /// False, and nothing taken, when there are not enough.
    bool pay(int cost)
    {
        const bool enough = cost <= m_credits;
        m_credits -= enough ? cost : 0;
        return enough;
    }

private:
    QSet<QString> m_tokens;
    int m_credits = 40;
};
