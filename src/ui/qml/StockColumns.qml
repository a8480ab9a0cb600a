import QtQml

// The columns of the list of stock files, for its heading and its rows alike.
QtObject {
    property real rowWidth: 0

    readonly property int margin: 10
    readonly property int gap: 12
    readonly property int side: 90
    readonly property real file: Math.max(80, rowWidth - 2 * side - 2 * gap - 2 * margin)
}
