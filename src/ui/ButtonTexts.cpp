#include "ui/ButtonTexts.h"

#include <QtGlobal>

QT_BEGIN_NAMESPACE
// The library has it everywhere, and says so to macOS only.
Q_DECL_IMPORT void qt_set_sequence_auto_mnemonic(bool enable);
QT_END_NAMESPACE

void takeButtonTextsAsTheyAre()
{
    qt_set_sequence_auto_mnemonic(false);
}
