#pragma once

#include "api/TransferMeter.h"
#include "app/AppState.h"
#include "app/HexEditing.h"
#include "core/FolderRows.h"
#include "core/HexCompare.h"
#include "core/HexInspector.h"
#include "core/HexMatches.h"
#include "core/HexModel.h"
#include "core/ModuleLines.h"
#include "core/RowModel.h"
#include "core/SortedRows.h"
#include "core/TextLines.h"
#include "ui/HexCanvas.h"
#include "ui/HexLine.h"
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

struct FolderRowsForeign
{
    Q_GADGET
    QML_FOREIGN(FolderRows)
    QML_NAMED_ELEMENT(FolderRows)
};

struct HexCanvasForeign
{
    Q_GADGET
    QML_FOREIGN(HexCanvas)
    QML_NAMED_ELEMENT(HexCanvas)
};

struct HexColumnForeign
{
    Q_GADGET
    QML_FOREIGN(HexColumn)
    QML_NAMED_ELEMENT(HexColumn)
};

struct HexCompareForeign
{
    Q_GADGET
    QML_FOREIGN(HexCompare)
    QML_NAMED_ELEMENT(HexCompare)
    QML_UNCREATABLE("It belongs to the controller, which hands it out")
};

struct HexEditingForeign
{
    Q_GADGET
    QML_FOREIGN(HexEditing)
    QML_NAMED_ELEMENT(HexEditing)
    QML_UNCREATABLE("It belongs to the controller, which hands it out")
};

struct HexInspectorForeign
{
    Q_GADGET
    QML_FOREIGN(HexInspector)
    QML_NAMED_ELEMENT(HexInspector)
};

struct HexLineForeign
{
    Q_GADGET
    QML_FOREIGN(HexLine)
    QML_NAMED_ELEMENT(HexLine)
};

struct HexMatchesForeign
{
    Q_GADGET
    QML_FOREIGN(HexMatches)
    QML_NAMED_ELEMENT(HexMatches)
    QML_UNCREATABLE("It belongs to the controller, which hands it out")
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

struct SortedRowsForeign
{
    Q_GADGET
    QML_FOREIGN(SortedRows)
    QML_NAMED_ELEMENT(SortedRows)
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
