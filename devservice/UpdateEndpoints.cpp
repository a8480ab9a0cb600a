#include "Endpoints.h"

using namespace Qt::StringLiterals;

void addUpdateEndpoints(EndpointTable &table, const QString &latestVersion,
                        std::function<QString()> downloadUrl)
{
    const auto latest = [latestVersion, downloadUrl = std::move(downloadUrl)](const ServiceRequest &) {
        return jsonAnswer({{u"latest_version"_s, latestVersion}, {u"download_url"_s, downloadUrl()}});
    };
    table.add("GET", apiRoot() + "updates/kvteditornew/update.json"_L1, latest);
    table.add("GET", u"/download"_s, [](const ServiceRequest &) {
        return ServiceAnswer{
            200, "text/plain; charset=utf-8", "Nothing to install: this is a stand-in of the service.\n", {}};
    });
}
