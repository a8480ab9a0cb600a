#pragma once

#include "ServiceTypes.h"

#include <QHash>
#include <QJsonObject>

#include <functional>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>

/// The service's endpoints by method and path. Handlers run one at a time, so a group may keep plain state.
class EndpointTable
{
public:
    using Handler = std::function<ServiceAnswer(const ServiceRequest &)>;

    /// `path` begins with "/".
    void add(const QByteArray &method, const QString &path, Handler handler);
    /// 404 for a path that is not there, 405 for a method that the path does not take.
    ServiceAnswer answer(const ServiceRequest &request);

private:
    QHash<QString, QHash<QByteArray, Handler>> m_handlers;
    std::mutex m_mutex;
};

/// All endpoints of the service are below this path; their names are relative to it.
QString apiRoot();

ServiceAnswer jsonAnswer(const QJsonObject &object, int status = 200);
/// {"status":"error","message":...,"error":...}: the editor's features read one or the other.
ServiceAnswer errorAnswer(const QString &message, int status = 200);
ServiceAnswer bytesAnswer(const QByteArray &bytes);
std::optional<QJsonObject> jsonBody(const ServiceRequest &request);
/// A JSON body that has all these members as texts, empty ones included; nothing, with the reason in `error`,
/// when one is not there.
std::optional<QJsonObject> textBody(const ServiceRequest &request,
                                    std::initializer_list<QLatin1StringView> members, QString *error);

// The groups, each in a source of its own

void addWorkerEndpoints(EndpointTable &table);
class StoreAccount;
/// Definition files and patches are paid with the credits of the same account.
void addXdfEndpoints(EndpointTable &table, std::shared_ptr<StoreAccount> account);
void addPatchEndpoints(EndpointTable &table, std::shared_ptr<StoreAccount> account);
void addStockEndpoints(EndpointTable &table);
void addFeedbackEndpoints(EndpointTable &table);
/// `downloadUrl` is asked at each request: the port is not known before.
void addUpdateEndpoints(EndpointTable &table, const QString &latestVersion,
                        std::function<QString()> downloadUrl);

class DevService;
/// Switches the faults of `service` and shows its counts, for a program in another process.
void addDevEndpoints(EndpointTable &table, DevService &service);
