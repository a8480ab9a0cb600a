import QtQuick
import KvtEditor

// The outcome of the last operation: `ok` is 1 for success, 0 for failure, anything else is neutral.
VOXLabel {
    property int ok: -1

    visible: text !== ""
    wrapMode: Text.Wrap
    color: ok === 1 ? VOXTheme.success : ok === 0 ? VOXTheme.error : VOXTheme.muted
}
