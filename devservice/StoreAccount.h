#pragma once

#include <QSet>
#include <QString>

/// The store's one documented account. Credits and sessions last as long as it does.
class StoreAccount
{
public:
    static constexpr int initialCredits = 40;

    /// A session's token, another one each time; empty when e-mail or password is wrong.
    QString signIn(const QString &email, const QString &password);
    bool hasSession(const QString &token) const { return m_tokens.contains(token); }

    int credits() const { return m_credits; }
    /// False, and nothing taken, when there are not enough.
    bool pay(int cost);

private:
    QSet<QString> m_tokens;
    int m_credits = initialCredits;
};
