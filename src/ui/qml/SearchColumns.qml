import QtQml

// The columns of the list of hits, for its heading and its rows alike.
QtObject {
    property real rowWidth: 0

    readonly property int margin: 10
    readonly property int gap: 12
    readonly property int os: 84
    readonly property int year: 44
    readonly property int make: 64
    readonly property real file: Math.max(80, rowWidth - os - year - make - 3 * gap - 2 * margin)
}
