#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <optional>

/// Where the service is and what a deployment adds to its requests.
struct ServiceConfig
{
    /// Absolute URL, ending in "/".
    QString apiBase;
    /// Name and value of the form fields that authenticate the program. Never shown, never logged.
    QVariantMap authFields;
    QString storeUrl;
    /// Sent where the user leaves an e-mail address empty; the address does not exist.
    QString placeholderEmail;
    /// Error text for the user when a configuration file cannot be used, so that there is no service. All
    /// other members are empty then.
    QString refusal = {};
    /// A problem for whoever installed the program to fix; for the log.
    QString warning = {};
};

/// What the program was built with.
ServiceConfig builtInServiceConfig();

/// `defaults` overridden by the members of a JSON object. Empty, with the reason in `error`, when the text is
/// not a JSON object, has an unknown key or a value of the wrong type, or an `apiBase` that is neither HTTPS
/// nor HTTP on a loopback address, or has more than host, port and path.
std::optional<ServiceConfig> parseServiceConfig(const QByteArray &json, const ServiceConfig &defaults,
                                                QString *error);

/// The configuration from `environmentFile` (named by the environment, may be empty), otherwise from
/// `service.json` in `programDir`, otherwise the built-in one. A file that cannot be used gives a warning
/// with its name, and no service: files meant for one service must not go to another.
ServiceConfig loadServiceConfig(const QString &environmentFile, const QString &programDir);

/// Loaded at the first call and kept for the life of the process. Main thread.
const ServiceConfig &serviceConfig();
