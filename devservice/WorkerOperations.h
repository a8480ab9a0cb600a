#pragma once

#include "SampleContainer.h"
#include "ServiceTypes.h"

#include <QJsonObject>

#include <span>

/// What the worker can be asked for by name. `file` is the part of that name; it is never empty.
struct WorkerOperation
{
    QLatin1StringView name;
    ServiceAnswer (*run)(const ServiceRequest &request, const ReceivedPart &file);
};

// The tables, each in a source of its own

std::span<const WorkerOperation> infoOperations();
std::span<const WorkerOperation> conversionOperations();
std::span<const WorkerOperation> swapOperations();

/// "status" and the identifiers, as the editor reads them.
QJsonObject infoObject(const SampleTune &tune);
