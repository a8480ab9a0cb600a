#include "ui/ButtonTexts.h"

#include <QtGlobal>

QT_BEGIN_NAMESPACE
// Qt exports it on all systems, but declares it on macOS only.
Q_DECL_IMPORT void qt_set_sequence_auto_mnemonic(bool enable);
QT_END_NAMESPACE

void disableAutoMnemonics()
{
    qt_set_sequence_auto_mnemonic(false);
}
