#pragma once

#include "api/TransferMeter.h"
#include "app/AppState.h"
#include "core/HexInspector.h"
#include "core/HexModel.h"
#include "core/ModuleLines.h"
#include "core/RowModel.h"
#include "core/TextLines.h"
#include "ui/InnerDialogs.h"

#include <QtQml/qqml.h>

// Declares the types of context properties to the QML tools, so that a misspelt property is a lint warning.
// The gadget macro needs its own line, or automoc skips the file.

struct AppStateForeign
{
    Q_GADGET
    QML_FOREIGN(AppState)
    QML_NAMED_ELEMENT(AppState)
    QML_UNCREATABLE("The program makes the one controller and hands it to the views as app")
};

struct HexInspectorForeign
{
    Q_GADGET
    QML_FOREIGN(HexInspector)
    QML_NAMED_ELEMENT(HexInspector)
};

struct HexModelForeign
{
    Q_GADGET
    QML_FOREIGN(HexModel)
    QML_NAMED_ELEMENT(HexModel)
};

struct InnerDialogsForeign
{
    Q_GADGET
    QML_FOREIGN(InnerDialogs)
    QML_NAMED_ELEMENT(InnerDialogs)
};

struct ModuleLinesForeign
{
    Q_GADGET
    QML_FOREIGN(ModuleLines)
    QML_NAMED_ELEMENT(ModuleLines)
};

struct RowModelForeign
{
    Q_GADGET
    QML_FOREIGN(RowModel)
    QML_NAMED_ELEMENT(RowModel)
};

struct TextLinesForeign
{
    Q_GADGET
    QML_FOREIGN(TextLines)
    QML_NAMED_ELEMENT(TextLines)
};

struct TransferMeterForeign
{
    Q_GADGET
    QML_FOREIGN(TransferMeter)
    QML_NAMED_ELEMENT(TransferMeter)
    QML_UNCREATABLE("It belongs to the controller, which hands it out")
};
