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
    /// The web shop's address.
    QString storeUrl;
    /// Sent where the user leaves an e-mail address empty; it cannot be delivered to.
    QString placeholderEmail;
    /// Why there is no service, in words for the user: a configuration file cannot be used. All else is empty
    /// then.
    QString refusal = {};
    /// What whoever installed the program should mend, for the log.
    QString warning = {};
};

/// What the program was built with.
ServiceConfig builtInServiceConfig();

/// `defaults` with the members of a JSON object over them. Nothing, with the reason in `error`, when the text
/// is no JSON object, holds an unknown key or a value of a wrong type, or names an `apiBase` that is neither
/// HTTPS nor HTTP on a loopback address, or holds more than host, port and path.
std::optional<ServiceConfig> parseServiceConfig(const QByteArray &json, const ServiceConfig &defaults,
                                                QString *error);

/// The configuration that holds for `environmentFile` (the file named by the environment, may be empty) and
/// `programDir`: that file, else `service.json` in `programDir` unless there is none, else the built-in one.
/// A file that cannot be used leaves a warning that names it, and no service: what was meant for one must not
/// go to another.
ServiceConfig loadServiceConfig(const QString &environmentFile, const QString &programDir);

/// Loaded at the first call and kept for the life of the process. Main thread.
const ServiceConfig &serviceConfig();
