#pragma once

#include "api/VoxApiClient.h"

#include <utility>

/// The functions that send all requests of the editor.
enum class Primitive
{
    PostJson,
    GetJson,
    PostMultipart,
    DownloadFile,
    KvtWorker
};

inline constexpr std::pair<Primitive, const char *> primitives[] = {
    {Primitive::PostJson, "postJson"},           {Primitive::GetJson, "getJson"},
    {Primitive::PostMultipart, "postMultipart"}, {Primitive::DownloadFile, "downloadFile"},
    {Primitive::KvtWorker, "kvtWorker"},
};

/// The outcome of one call, and how often it called back.
struct Outcome
{
    int calls = 0;
    QByteArray bytes;
    QJsonObject object;
    QString error;
    WorkerResult worker;

    bool failed() const { return !error.isEmpty() || !worker.error.isEmpty(); }
};

/// Sends a request to the path "x", a worker's to the worker; a POST carries `bodySize` times an "x".
/// `outcome` has to outlive the client.
void start(VoxApiClient &client, Primitive primitive, Outcome &outcome, qsizetype bodySize = 10);
