#include "StoreAccount.h"

using namespace Qt::StringLiterals;

QString StoreAccount::signIn(const QString &email, const QString &password)
{
    if (email != "demo@vox.invalid"_L1 || password != "demo"_L1)
        return {};
    const QString token = u"demo-session-%1"_s.arg(m_tokens.size() + 1);
    m_tokens.insert(token);
    return token;
}

bool StoreAccount::pay(int cost)
{
    if (cost > m_credits)
        return false;
    m_credits -= cost;
    return true;
}
