#pragma once

#include <QSslConfiguration>
#include <QString>

/// Trusts the certificate in the file that BENCH_AUTHORITY names, if there is one.
inline void trustAuthority()
{
    const QString authority = qEnvironmentVariable("BENCH_AUTHORITY");
    if (authority.isEmpty())
        return;
    QSslConfiguration settings = QSslConfiguration::defaultConfiguration();
    settings.addCaCertificates(authority);
    QSslConfiguration::setDefaultConfiguration(settings);
}
